// orvantactl list, info and version: what needs no open device.
#include "ctl/arguments/request.hpp"
#include "ctl/commands/commands.hpp"
#include "ctl/report/output.hpp"
#include "ctl/service/connection.hpp"
#include "ctl/service/device_text.hpp"
#include "vantu/orvanta/version.h"

#include <nlohmann/json.hpp>

namespace vantu::orvanta::ctl {

void list_devices(const request& asked, output& out) {
    connection to(asked);
    nlohmann::ordered_json documents = nlohmann::ordered_json::array();
    std::string text;
    for (const device& one : to.service().devices()) {
        documents.push_back(document_of(one));
        text += line_of(one) + "\n";
    }
    if (documents.empty()) {
        out.note("the service has no devices");
    }
    out.result({{"devices", std::move(documents)}}, text);
}

void show_device(const request& asked, output& out) {
    connection to(asked);
    const device chosen = to.choose();
    nlohmann::ordered_json document = document_of(chosen);
    document["handedness"] = name_of(chosen.handedness);
    document["information"] = hexadecimal(chosen.information);
    out.result({{"device", std::move(document)}}, description_of(chosen));
}

void show_version(const request&, output& out) {
    const std::string program = VANTU_ORVANTA_VERSION;
    const std::string library = vantu_orvanta_version();
    out.result({{"program", program}, {"library", library}},
               "orvantactl " + program + "\nlibrary " + library + "\n");
}

} // namespace vantu::orvanta::ctl
