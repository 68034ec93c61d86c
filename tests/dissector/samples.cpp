#include "dissector/samples.hpp"

#include <algorithm>
#include <cctype>

namespace orvanta_tests {
namespace {

using enum vantu::orvanta::communication::direction;

const sample_field device{"device_id", "D4 C3 B2 A1", "2712847316"};

// A long field of bytes that rise from first.
sample_field rising(const std::string& name, std::uint8_t first, std::size_t count) {
    const bytes content = counting(first, count);
    return {name, hex(content), plain_hex(content)};
}

sample_field text(const std::string& name, const std::string& content, std::size_t size) {
    return {name, hex(text_field(content, size)), content};
}

const sample_field six_values{"values",
                              "00 00 80 3F 00 00 00 40 00 00 40 C0 00 00 00 3F 00 00 80 BE 00 00 00 00",
                              "1;2;-3;0.5;-0.25;0"};

std::vector<sample> make_samples() {
    const std::vector<sample_field> device_alone{device};
    return {
        {"keep_alive", to_service, "FF 01 00 00 00", "1", "0", "0", {}},
        {"ack", to_client, "FF 02 00 00 09", "2", "0", "9", {}},
        {"connect",
         to_service,
         "FF 03 70 00 00",
         "3",
         "112",
         "0",
         {{"value_a", "02 01", "258"},
          {"value_b", "FF FF", "65535"},
          {"keep_alive_ns", "00 F2 05 2A 01 00 00 00", "5000000000"},
          {"process_id", "39 30 00 00", "12345"},
          text("client_name", "a name of 31 bytes, then a zero.", 32),
          text("version_text", "2.0.0", 64)}},
        {"connected",
         to_client,
         "FF 04 08 00 00",
         "4",
         "8",
         "0",
         {{"client_id", "08 07 06 05 04 03 02 81", "9295995896645158664"}}},
        {"disconnect", to_service, "FF 05 00 00 00", "5", "0", "0", {}},
        {"disconnected", to_client, "FF 06 00 00 00", "6", "0", "0", {}},
        {"device_added",
         to_client,
         "FF 10 18 00 00",
         "16",
         "24",
         "0",
         {device,
          {"device_type", "02", "2"},
          {"second_byte", "EE", "238"},
          {"short_id", "01 30", "0x3001"},
          rising("uuid", 0x60, 16)}},
        {"device_removed", to_client, "FF 11 04 00 00", "17", "4", "0", device_alone},
        {"device_open", to_service, "FF 12 06 00 01", "18", "6", "1", {device, {"value", "34 12", "4660"}}},
        {"device_opened", to_client, "FF 13 04 00 FF", "19", "4", "255", device_alone},
        {"device_close", to_service, "FF 14 04 00 02", "20", "4", "2", device_alone},
        {"device_closed", to_client, "FF 15 04 00 02", "21", "4", "2", device_alone},
        {"device_block_reply",
         to_client,
         "FF 16 14 00 03",
         "22",
         "20",
         "3",
         {device, rising("bytes", 0x20, 16)}},
        {"device_info_orvanta3",
         to_client,
         "FF 17 0D 00 00",
         "23",
         "13",
         "0",
         {device, rising("information", 0x30, 8), {"handedness", "01", "1"}}},
        {"device_info_palmetron",
         to_client,
         "FF 18 0C 00 00",
         "24",
         "12",
         "0",
         {device, rising("information", 0xF8, 8)}},
        {"cursor_state", to_client, "FF 21 1C 00 00", "33", "28", "0", {device, six_values}},
        {"cursor_state_b", to_client, "FF 25 1C 00 00", "37", "28", "0", {device, six_values}},
        {"palmetron_state",
         to_client,
         "FF 28 19 00 00",
         "40",
         "25",
         "0",
         {device,
          {"first", "5A", "90"},
          rising("block", 0x10, 16),
          {"tail_count", "03", "3"},
          {"tail", "E1 E2 E3", "e1e2e3"}}},
        {"orientation_get", to_service, "FF 2F 04 00 07", "47", "4", "7", device_alone},
        {"orientation_get",
         to_client,
         "FF 2F 14 00 07",
         "47",
         "20",
         "7",
         {device,
          {"r", "00 00 80 3F", "1"},
          {"x", "00 00 00 3F", "0.5"},
          {"y", "00 00 80 BE", "-0.25"},
          {"z", "00 00 00 40", "2"}}},
        {"config_save", to_service, "FF 40 04 00 08", "64", "4", "8", device_alone},
        {"config_save", to_client, "FF 40 05 00 08", "64", "5", "8", {device, {"saved", "01", "1"}}},
        {"config_gravity_compensation_get", to_service, "FF 42 04 00 0A", "66", "4", "10", device_alone},
        {"config_gravity_compensation_get",
         to_client,
         "FF 42 09 00 0A",
         "66",
         "9",
         "10",
         {device, {"enabled", "01", "1"}, {"scaling_factor", "00 00 40 3F", "0.75"}}},
        {"config_gravity_compensation_set",
         to_service,
         "FF 43 09 00 0B",
         "67",
         "9",
         "11",
         {device, {"enabled", "00", "0"}, {"scaling_factor", "00 00 80 3E", "0.25"}}},
        {"config_torque_scaling_get", to_service, "FF 44 04 00 0C", "68", "4", "12", device_alone},
        {"config_torque_scaling_get",
         to_client,
         "FF 44 05 00 0C",
         "68",
         "5",
         "12",
         {device, {"enabled", "02", "2"}}},
        {"config_torque_scaling_set",
         to_service,
         "FF 45 05 00 0D",
         "69",
         "5",
         "13",
         {device, {"enabled", "01", "1"}}},
        {"config_handedness",
         to_client,
         "FF 46 05 00 0E",
         "70",
         "5",
         "14",
         {device, {"handedness", "02", "2"}}},
        {"config_handedness_set",
         to_service,
         "FF 47 05 00 0E",
         "71",
         "5",
         "14",
         {device, {"handedness", "01", "1"}}},
        {"status_motor_current",
         to_client,
         "FF 50 10 00 00",
         "80",
         "16",
         "0",
         {device, {"values", "00 00 80 3F 00 00 00 40 00 00 40 40", "1;2;3"}}},
        {"status_power_supply",
         to_client,
         "FF 51 05 00 00",
         "81",
         "5",
         "0",
         {device, {"state", "FE", "254"}}},
        {"table_block_128", to_client, "FF 60 80 00 0F", "96", "128", "15", {rising("bytes", 0x01, 128)}},
        {"table_block_301", to_client, "FF 61 2D 01 0F", "97", "301", "15", {rising("bytes", 0x01, 301)}},
        {"service_stream_a", to_client, "FF E0 0C 00 00", "224", "12", "0", {rising("bytes", 0x60, 12)}},
        {"service_stream_b",
         to_client,
         "FF E1 34 00 00",
         "225",
         "52",
         "0",
         {device, rising("bytes", 0x70, 48)}},
        {"service_error", to_client, "FF F0 05 00 0B", "240", "5", "11", {device, {"status", "B1", "177"}}},
    };
}

} // namespace

const std::vector<sample>& samples() {
    static const std::vector<sample> all = make_samples();
    return all;
}

bytes body_of(const sample& of) {
    std::string text;
    for (const sample_field& field : of.fields) {
        text += field.wire + ' ';
    }
    return from_hex(text);
}

sent_datagram datagram_of(const sample& of) {
    const bytes content = join({from_hex("E9 9E 01 00 00 00"), from_hex(of.record), body_of(of)});
    return of.way == to_service ? sent_to_service(content) : sent_to_client(content);
}

std::string filter_of(const sample& of, const sample_field& field) {
    return field.name == "device_id" ? "orvanta.device_id" : "orvanta." + of.name + '.' + field.name;
}

shown_fields shown_header() {
    return {{"orvanta.header", "1"},
            {"orvanta.header.magic", "0x9ee9"},
            {"orvanta.header.version", "1"},
            {"orvanta.header.reserved", "0x0000"}};
}

shown_fields shown_record(const sample& of) {
    shown_fields shown = shown_header();
    shown.merge(shown_fields{{"orvanta.op", "1"},
                             {"orvanta.op.magic", "0xff"},
                             {"orvanta.op.code", of.code},
                             {"orvanta.op.length", of.length},
                             {"orvanta.op.tag", of.tag},
                             {"orvanta." + of.name, "1"}});
    return shown;
}

shown_fields shown_whole(const sample& of) {
    shown_fields shown = shown_record(of);
    for (const sample_field& field : of.fields) {
        shown[filter_of(of, field)] = field.shown;
    }
    return shown;
}

std::string plain_hex(const bytes& of) {
    std::string text;
    for (const char letter : hex(of)) {
        if (letter != ' ') {
            text += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        }
    }
    return text;
}

} // namespace orvanta_tests
