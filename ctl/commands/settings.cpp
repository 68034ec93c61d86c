// orvantactl get, set and save.
#include "ctl/arguments/request.hpp"
#include "ctl/commands/commands.hpp"
#include "ctl/report/output.hpp"
#include "ctl/service/connection.hpp"
#include "ctl/service/device_text.hpp"
#include "ctl/settings/apply.hpp"
#include "ctl/settings/configuration.hpp"
#include "ctl/settings/device_states.hpp"
#include "ctl/settings/words.hpp"

#include <nlohmann/json.hpp>

namespace vantu::orvanta::ctl {
namespace {

// Asks only what is needed, and for each part once.
class reader {
  public:
    reader(connection& from, const device_states& states, std::uint32_t device_id)
        : from_(from), states_(states), device_id_(device_id) {}

    value read(key which) {
        switch (which) {
        case key::orientation:
            return ask_orientation(from_, device_id_);
        case key::motor_current:
        case key::power_supply:
            return states_.wait_for(which, from_, device_id_);
        case key::gravity_compensation:
        case key::scaling_factor:
        case key::torque_scaling:
        case key::handedness:
            break;
        }
        if (asked_.count(which) == 0) {
            asked_.merge(ask_part(from_, device_id_, part_of(which)));
        }
        return asked_.at(which);
    }

  private:
    connection& from_;
    const device_states& states_;
    std::uint32_t device_id_;
    value_set asked_;
};

} // namespace

void get_values(const request& asked, output& out) {
    const std::vector<key> wanted = keys_in(asked.words);
    device_states states;
    connection to(asked, states.callbacks());
    const device chosen = to.choose();
    // The handedness stands in the list.
    if (wanted != std::vector{key::handedness}) {
        to.open(chosen);
    }
    reader values(to, states, chosen.id);
    nlohmann::ordered_json documents = nlohmann::ordered_json::object();
    std::string text;
    for (const key which : wanted) {
        const value read = values.read(which);
        const std::string name(row_of(which).name);
        documents[name] = json_of(read);
        text += (wanted.size() == 1 ? "" : name + "=") + text_of(read) + "\n";
    }
    out.result({{"device", document_of(chosen)}, {"values", std::move(documents)}}, text);
}

void set_values(const request& asked, output& out) {
    const value_set wanted = assignments_in(asked.words);
    connection to(asked);
    const device chosen = to.open_chosen();
    const value_set in_force = read_parts_of(to, chosen.id, wanted);
    const std::vector<change> changes = changes_between(in_force, wanted);
    if (!asked.dry_run) {
        carry_out(to, chosen.id, in_force, changes, after_failure::leave);
        if (asked.save) {
            save_and_check(to, chosen.id, in_force, changes);
        }
    }
    out.result(document_of(chosen, changes, asked), text_of(changes, asked));
}

void save_configuration(const request& asked, output& out) {
    connection to(asked);
    const device chosen = to.open_chosen();
    save(to, chosen.id);
    out.result({{"device", document_of(chosen)}, {"saved", true}}, "saved\n");
}

} // namespace vantu::orvanta::ctl
