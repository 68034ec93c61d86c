#include "ctl/watch/rows.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <cmath>
#include <span>

namespace vantu::orvanta::ctl {
namespace {

// The shortest text that reads as the same float.
std::string json_number(float amount) {
    return std::isfinite(amount) ? formatted("{}", amount) : "null";
}

std::string json_array(std::span<const float> values) {
    std::string text = "[";
    for (const float amount : values) {
        text += text.size() > 1 ? "," : "";
        text += json_number(amount);
    }
    return text + "]";
}

std::string cells_of(std::span<const float> values) {
    std::string text;
    for (const float amount : values) {
        text += formatted(",{}", amount);
    }
    return text;
}

std::string columns_of(std::span<const float> values) {
    std::string text;
    for (const float amount : values) {
        text += formatted(" {:>9.5f}", amount);
    }
    return text;
}

} // namespace

std::string line_of(const observation& one) {
    std::string text = formatted("{:>10.3f} s  position{}  velocity{}", one.seconds, columns_of(one.position),
                                 columns_of(one.velocity));
    if (one.news.orientation) {
        text += "  orientation" + columns_of(values_of(*one.news.orientation));
    }
    if (one.news.motor_current) {
        text += "  motor current" + columns_of(*one.news.motor_current);
    }
    if (one.news.power_supply) {
        text += formatted("  power supply {}", *one.news.power_supply);
    }
    return text + "\n";
}

std::string csv_header() {
    return "time [s],number,stream,"
           "position x [not specified],position y [not specified],position z [not specified],"
           "velocity x [not specified],velocity y [not specified],velocity z [not specified],"
           "orientation r,orientation x,orientation y,orientation z,"
           "motor current 1 [not specified],motor current 2 [not specified],motor current 3 [not specified],"
           "power supply [not specified]\n";
}

std::string csv_row(const observation& one) {
    std::string text = formatted("{:.6f},{},{}", one.seconds, one.number, one.stream) +
                       cells_of(one.position) + cells_of(one.velocity);
    text += one.news.orientation ? cells_of(values_of(*one.news.orientation)) : ",,,,";
    text += one.news.motor_current ? cells_of(*one.news.motor_current) : ",,,";
    text += one.news.power_supply ? formatted(",{}", *one.news.power_supply) : ",";
    return text + "\n";
}

std::string json_row(const observation& one) {
    std::string text =
        formatted(R"({{"time":{:.6f},"number":{},"stream":{},"position":{},"velocity":{})", one.seconds,
                  one.number, one.stream, json_array(one.position), json_array(one.velocity));
    if (one.news.orientation) {
        const orientation& turned = *one.news.orientation;
        text += formatted(R"(,"orientation":{{"r":{},"x":{},"y":{},"z":{}}})", json_number(turned.r),
                          json_number(turned.x), json_number(turned.y), json_number(turned.z));
    }
    if (one.news.motor_current) {
        text += R"(,"motor-current":)" + json_array(*one.news.motor_current);
    }
    if (one.news.power_supply) {
        text += formatted(R"(,"power-supply":{})", *one.news.power_supply);
    }
    return text + "}\n";
}

} // namespace vantu::orvanta::ctl
