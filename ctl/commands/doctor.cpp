// orvantactl doctor: goes from the machine to the device, and tells at which step something is wrong and what
// to do.
#include "ctl/arguments/request.hpp"
#include "ctl/commands/commands.hpp"
#include "ctl/doctor/device_checks.hpp"
#include "ctl/doctor/handshake.hpp"
#include "ctl/doctor/machine_checks.hpp"
#include "ctl/report/output.hpp"
#include "ctl/report/terminal.hpp"
#include "vantu/orvanta/version.h"

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

namespace vantu::orvanta::ctl {
namespace {

constexpr std::chrono::nanoseconds stream_time = std::chrono::seconds(1);

class examination {
  public:
    examination(const request& asked, const output& out)
        : asked_(asked), out_(out), is_coloured_(output_has_colour()) {}

    void run() {
        end_when_interrupted();
        look_at_the_machine();
        look_at_the_service();
        look_at_the_devices();
        tell(check_versions({VANTU_ORVANTA_VERSION_NUMBER, VANTU_ORVANTA_VERSION},
                            {vantu_orvanta_version_number(), vantu_orvanta_version()}));
        if (out_.in_json()) {
            out_.result(document_of(findings_), "");
        }
    }

    [[nodiscard]] const finding* why_it_fails() const { return first_failure(findings_); }

  private:
    // A person sees each as soon as it is known.
    void tell(finding found) {
        if (!out_.in_json()) {
            output::write(text_of(found, is_coloured_));
        }
        findings_.push_back(std::move(found));
    }

    // The check that keeps those after it from running, or null.
    [[nodiscard]] const char* obstacle() const {
        const auto found = std::find_if(findings_.begin(), findings_.end(), [](const finding& one) {
            return one.outcome == check_outcome::failed;
        });
        return found == findings_.end() ? nullptr : found->check;
    }
    bool skip(const char* check) {
        const char* why = obstacle();
        if (why != nullptr) {
            tell(skipped(check, std::string(why) + " failed"));
        }
        return why != nullptr;
    }

    void look_at_the_machine() {
        const loopback_view loopback = look_at_loopback(asked_.timeout);
        address_ = loopback.localhost.addresses.empty() ? "" : loopback.localhost.addresses.front();
        tell(check_loopback(loopback));
        const auto services = holders_of(service_port, service_port);
        service_holder_ = services ? processes_of(*services) : "";
        tell(check_service_port(services, address_));
        if (address_.empty()) {
            tell(skipped("client-ports", "loopback failed"));
            return;
        }
        const std::vector<std::uint16_t> taken = taken_client_ports(address_);
        client_port_ = first_client_port;
        while (std::find(taken.begin(), taken.end(), client_port_) != taken.end()) {
            ++client_port_;
        }
        tell(check_client_ports(
            taken, holders_of(first_client_port, last_client_port).value_or(std::vector<port_holder>{})));
    }

    void look_at_the_service() {
        if (skip("handshake")) {
            return;
        }
        const handshake_view seen = shake_hands(address_, client_port_, asked_.timeout);
        std::optional<failure> of_the_library;
        if (seen.answer.kind == answer_kind::accepted) {
            of_the_library = connect();
        }
        tell(check_handshake(seen, service_holder_, asked_.timeout, of_the_library));
    }

    // The failure, if there is one.
    std::optional<failure> connect() {
        session::callbacks told;
        told.on_cursor = [recorder = recorder_](session&, const cursor_sample& sample) {
            recorder->add(sample.device_id, sample.received);
        };
        try {
            connection_ = std::make_unique<connection>(asked_, std::move(told));
        } catch (const failure_with_status& why) {
            end_when_interrupted();
            return failure{why.code(), why.what()};
        }
        return std::nullopt;
    }

    void look_at_the_devices() {
        if (!skip("devices")) {
            tell(check_devices(connection_->service().devices()));
        }
        std::vector<std::uint32_t> opened;
        if (!skip("open")) {
            opening done = check_open(*connection_, asked_.device, asked_.timeout);
            opened = std::move(done.opened);
            tell(std::move(done.found));
        }
        if (opened.empty()) {
            skip("request");
            skip("stream");
            return;
        }
        tell(check_request(ask_for_orientation(*connection_, opened.front(), asked_.timeout)));
        if (connection_->service().is_connected()) {
            tell(check_stream(watch_stream(*connection_, *recorder_, opened.front(),
                                           std::min(stream_time, asked_.timeout))));
        } else {
            tell(skipped("stream", "the connection to the service is lost"));
        }
        // The goodbye of the connection follows, so nobody has to wait for these.
        for (const std::uint32_t id : opened) {
            connection_->service().close(id, [](session&, const result<void>&) {});
        }
    }

    const request& asked_;
    const output& out_;
    bool is_coloured_;
    std::vector<finding> findings_;
    std::string address_; // of localhost, as the library takes it
    std::string service_holder_;
    std::uint16_t client_port_{first_client_port};
    std::shared_ptr<stream_recorder> recorder_{std::make_shared<stream_recorder>()};
    std::unique_ptr<connection> connection_;
};

} // namespace

void diagnose(const request& asked, output& out) {
    examination of_all(asked, out);
    of_all.run();
    if (const finding* why = of_all.why_it_fails(); why != nullptr) {
        throw failure_with_status(why->status, std::string(why->check) + " failed: " + why->seen);
    }
}

} // namespace vantu::orvanta::ctl
