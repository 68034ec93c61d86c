#include "dissector/dissected.hpp"

#include "app/support/child_process.hpp"
#include "shared/capture_file.hpp"
#include "support/scratch_folder.hpp"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace orvanta_tests {
namespace {

constexpr char between_fields = '\t';
constexpr char between_values = ';';

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream rest(text);
    for (std::string part; std::getline(rest, part, separator);) {
        parts.push_back(part);
    }
    return parts;
}

void let_all_read(const std::filesystem::path& folder) {
    using std::filesystem::perms;
    std::filesystem::permissions(folder, perms::owner_all | perms::group_read | perms::group_exec |
                                             perms::others_read | perms::others_exec);
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        std::filesystem::permissions(file, perms::owner_read | perms::owner_write | perms::group_read |
                                               perms::others_read);
    }
}

// A file of datagrams, gone with the object.
class capture {
  public:
    explicit capture(const std::vector<sent_datagram>& datagrams) {
        vantu::orvanta::capture_writer file(path_);
        for (const sent_datagram& one : datagrams) {
            vantu::orvanta::captured_datagram captured;
            captured.time_ns = one.time_ns;
            captured.from.address = {std::byte{127}, std::byte{0}, std::byte{0}, std::byte{1}};
            captured.to = captured.from;
            captured.from.port = one.from;
            captured.to.port = one.to;
            for (const std::uint8_t byte : one.content) {
                captured.bytes.push_back(std::byte{byte});
            }
            file.write(captured);
        }
        file.flush();
    }

    // Takes the last bytes from the only frame, whose length stays what it was.
    void leave_out(std::uint32_t missing) const {
        constexpr std::size_t frame_place = 40; // a file header of 24 bytes and a frame header of 16
        constexpr std::streamoff captured_length_place = 32;
        const std::uintmax_t size = std::filesystem::file_size(path_) - missing;
        std::filesystem::resize_file(path_, size);
        std::fstream file(path_, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(captured_length_place);
        for (const std::uint8_t byte : u32(static_cast<std::uint32_t>(size - frame_place))) {
            file.put(static_cast<char>(byte));
        }
    }

    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    scratch_folder folder_;
    std::string path_{folder_.file("datagrams.pcap")};
};

// The program with the dissector among its plugins, and with no other plugin and no setting.
class tshark {
  public:
    tshark() {
        std::filesystem::copy_file(DISSECTOR, plugins_.file("orvanta.lua"));
        let_all_read(plugins_.path());
    }

    // Throws std::runtime_error unless it ends well without a word on standard error.
    [[nodiscard]] std::string run(const std::vector<std::string>& arguments) const {
        std::vector<std::string> command = first_words();
        command.insert(command.end(),
                       {"HOME=" + plugins_.file("home"), "XDG_CONFIG_HOME=" + plugins_.file("home"),
                        "WIRESHARK_PLUGIN_DIR=" + plugins_.path().string(), "tshark"});
        command.insert(command.end(), arguments.begin(), arguments.end());
        child_process program(command, attachment::pipes);
        program.close_input();
        const ending end = program.wait();
        if (end != succeeded || !program.rest_of_errors().empty()) {
            throw std::runtime_error("tshark, which scripts/setup.sh test installs, ends with " +
                                     std::to_string(end.code) + ": " + program.rest_of_errors());
        }
        return program.rest();
    }

    [[nodiscard]] std::string read(const std::string& path, const std::vector<std::string>& options) const {
        let_all_read(std::filesystem::path(path).parent_path());
        // Twice, so that a request shows the answer that comes after it.
        std::vector<std::string> arguments{"-n", "-2", "-r", path};
        arguments.insert(arguments.end(), options.begin(), options.end());
        std::string printed = run(arguments);
        if (printed.find("Lua Error") != std::string::npos) {
            throw std::runtime_error("an error in Lua: " + printed.substr(printed.find("Lua Error"), 1000));
        }
        return printed;
    }

  private:
    // For root it takes no plugins from elsewhere.
    static std::vector<std::string> first_words() {
        if (geteuid() != 0) {
            return {"/usr/bin/env"};
        }
        return {"/usr/bin/setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "/usr/bin/env"};
    }

    scratch_folder plugins_;
};

} // namespace

sent_datagram sent_to_service(bytes content, std::int64_t time_ns) {
    return {std::move(content), 54321, 54320, time_ns};
}

sent_datagram sent_to_client(bytes content, std::int64_t time_ns) {
    return {std::move(content), 54320, 54321, time_ns};
}

const std::vector<registered_field>& registered_fields() {
    static const std::vector<registered_field> fields = [] {
        std::vector<registered_field> found;
        for (const std::string& line : split(tshark().run({"-G", "fields"}), '\n')) {
            const std::vector<std::string> columns = split(line, '\t');
            if (columns.size() > 3 && columns[0] == "F" && columns[2].starts_with("orvanta.")) {
                found.push_back({columns[2], columns[1], columns[3]});
            }
        }
        return found;
    }();
    return fields;
}

const std::vector<std::string>& registered_filters() {
    static const std::vector<std::string> filters = [] {
        std::vector<std::string> names;
        for (const registered_field& field : registered_fields()) {
            names.push_back(field.filter);
        }
        return names;
    }();
    return filters;
}

std::vector<shown_fields> dissect_file(const std::string& path, const std::vector<std::string>& options,
                                       const std::vector<std::string>& filters) {
    std::vector<std::string> arguments = options;
    arguments.insert(arguments.end(),
                     {"-T", "fields", "-E", "separator=/t", "-E", std::string("aggregator=") + between_values,
                      "-e", "frame.number", "-e", "_ws.col.Info"});
    for (const std::string& filter : filters) {
        arguments.insert(arguments.end(), {"-e", filter});
    }
    arguments.insert(arguments.end(), {"-e", "_ws.expert.message"}); // tells of errors in Lua
    std::vector<shown_fields> rows;
    for (const std::string& line : split(tshark().read(path, arguments), '\n')) {
        std::vector<std::string> values = split(line, between_fields);
        values.resize(filters.size() + 3);
        if (values[0] != std::to_string(rows.size() + 1)) {
            throw std::runtime_error("tshark shows frame " + values[0] + " out of its turn");
        }
        shown_fields& row = rows.emplace_back();
        row["info"] = values[1];
        for (std::size_t i = 0; i < filters.size(); ++i) {
            if (!values[i + 2].empty()) {
                row[filters[i]] = values[i + 2];
            }
        }
    }
    return rows;
}

std::vector<shown_fields> dissect(const std::vector<sent_datagram>& datagrams,
                                  const std::vector<std::string>& options,
                                  const std::vector<std::string>& filters) {
    std::vector<shown_fields> rows = dissect_file(capture(datagrams).path(), options, filters);
    if (rows.size() != datagrams.size()) {
        throw std::runtime_error("tshark shows " + std::to_string(rows.size()) + " of " +
                                 std::to_string(datagrams.size()) + " datagrams");
    }
    return rows;
}

shown_fields dissect_captured_part(const sent_datagram& whole, std::uint32_t missing) {
    const capture part({whole});
    part.leave_out(missing);
    return dissect_file(part.path()).at(0);
}

std::string trees_of(const std::vector<sent_datagram>& datagrams) {
    return tshark().read(capture(datagrams).path(), {"-O", "orvanta"});
}

} // namespace orvanta_tests
