// orvantactl backup, restore and diff.
#include "ctl/arguments/request.hpp"
#include "ctl/commands/commands.hpp"
#include "ctl/report/output.hpp"
#include "ctl/service/connection.hpp"
#include "ctl/service/device_text.hpp"
#include "ctl/settings/apply.hpp"
#include "ctl/settings/backup.hpp"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace vantu::orvanta::ctl {
namespace {

value_set every_setting() {
    value_set all;
    for (const key_row& row : keys()) {
        if (row.can_be_set) {
            all.emplace(row.id, value());
        }
    }
    return all;
}

// Without --device the one of the file, if it is there.
device choose_device_of(connection& to, const request& asked, const backup& kept) {
    const std::vector<device> devices = to.service().devices();
    const auto same = std::find_if(devices.begin(), devices.end(),
                                   [&](const device& one) { return one.uuid == kept.uuid; });
    return asked.device.empty() && same != devices.end() ? *same : to.choose();
}

std::string owner_of(const backup& kept) {
    device described;
    described.short_id = kept.short_id;
    return std::string(name_of(kept.type)) + " " + short_id_text(described) + ", " + kept.uuid;
}

} // namespace

void back_up(const request& asked, output& out) {
    const std::string& path = asked.words.front();
    require_file_or_nothing(path);
    connection to(asked);
    const device chosen = to.open_chosen();
    const backup kept{chosen.uuid, chosen.type, chosen.short_id,
                      read_parts_of(to, chosen.id, every_setting())};
    write_backup(path, kept);
    nlohmann::ordered_json settings = nlohmann::ordered_json::object();
    std::string text;
    for (const auto& [which, one] : kept.settings) {
        const std::string name(row_of(which).name);
        settings[name] = json_of(one);
        text += name + "=" + text_of(one) + "\n";
    }
    out.result({{"device", document_of(chosen)}, {"file", path}, {"settings", std::move(settings)}}, text);
}

void restore(const request& asked, output& out) {
    const std::string& path = asked.words.front();
    const backup kept = read_backup(path);
    connection to(asked);
    const device chosen = choose_device_of(to, asked, kept);
    if (chosen.uuid != kept.uuid && !asked.other_device) {
        throw failure_with_status(exit_status::refused, path + ": this is the backup of another device (" +
                                                            owner_of(kept) +
                                                            "); --other-device restores it nevertheless");
    }
    to.open(chosen);
    const value_set in_force = read_parts_of(to, chosen.id, kept.settings);
    const std::vector<change> changes = changes_between(in_force, kept.settings);
    if (!asked.dry_run) {
        carry_out(to, chosen.id, in_force, changes, after_failure::put_back);
        if (asked.save) {
            save_and_check(to, chosen.id, in_force, changes);
        }
    }
    out.result(document_of(chosen, changes, asked), text_of(changes, asked));
}

void show_differences(const request& asked, output& out) {
    const std::string& path = asked.words.front();
    const backup kept = read_backup(path);
    connection to(asked);
    const device chosen = choose_device_of(to, asked, kept);
    if (chosen.uuid != kept.uuid) {
        out.note(path + ": this is the backup of another device (" + owner_of(kept) + ")");
    }
    to.open(chosen);
    nlohmann::ordered_json documents = nlohmann::ordered_json::array();
    std::string text;
    for (const change& one : changes_between(read_parts_of(to, chosen.id, kept.settings), kept.settings)) {
        if (is_real(one)) {
            const std::string name(row_of(one.which).name);
            documents.push_back(
                {{"key", name}, {"file", json_of(one.after)}, {"device", json_of(one.before)}});
            text += name + ": file " + text_of(one.after) + ", device " + text_of(one.before) + "\n";
        }
    }
    out.result({{"device", document_of(chosen)},
                {"file", path},
                {"same_device", chosen.uuid == kept.uuid},
                {"differences", std::move(documents)}},
               text);
}

} // namespace vantu::orvanta::ctl
