// orvantactl watch: shows, prints and draws what a device measures, until its time is up or something ends
// it.
#include "ctl/arguments/request.hpp"
#include "ctl/commands/commands.hpp"
#include "ctl/report/output.hpp"
#include "ctl/report/terminal.hpp"
#include "ctl/service/connection.hpp"
#include "ctl/service/device_text.hpp"
#include "ctl/watch/plot_file.hpp"
#include "ctl/watch/printers.hpp"
#include "ctl/watch/recording_plot.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <optional>
#include <thread>

namespace vantu::orvanta::ctl {
namespace {

using std::chrono::steady_clock;

constexpr auto printing_period = std::chrono::milliseconds(10);
constexpr auto orientation_period = std::chrono::milliseconds(250);
constexpr auto orientation_patience = std::chrono::seconds(1);
constexpr auto progress_period = std::chrono::seconds(10);
constexpr auto least_time_with_progress = std::chrono::seconds(30);

[[noreturn]] void refuse(const std::string& text) {
    throw failure_with_status(exit_status::wrong_usage, text);
}

watch_format format_for(const request& asked) {
    const bool terminal = output_is_terminal();
    if (asked.json && asked.format.value_or(watch_format::json) != watch_format::json) {
        refuse("--json and another --format exclude each other");
    }
    if (asked.format == watch_format::live && !terminal) {
        refuse("--format live needs a terminal; lines, csv and json go anywhere");
    }
    if (asked.json) {
        return watch_format::json;
    }
    return asked.format.value_or(terminal ? watch_format::live : watch_format::lines);
}

session::callbacks callbacks_into(recording& taken, const std::atomic<std::uint32_t>& device_id) {
    session::callbacks told;
    told.on_cursor = [&](session&, const cursor_sample& sample) {
        if (sample.device_id == device_id) {
            taken.add(sample);
        }
    };
    told.on_motor_current = [&](session&, const motor_current& currents) {
        if (currents.device_id == device_id) {
            taken.add(currents, steady_clock::now());
        }
    };
    told.on_power_supply = [&](session&, const power_supply& state) {
        if (state.device_id == device_id) {
            taken.add(state);
        }
    };
    told.on_removal = [&](session&, const device& gone) {
        if (gone.id == device_id) {
            taken.end("the device was unplugged");
        }
    };
    told.on_lost = [&](session&, const session::loss& why) {
        taken.end("the connection is lost: " + why.message);
    };
    return told;
}

class watching {
  public:
    watching(const request& asked, output& out)
        : asked_(asked), out_(out), format_(format_for(asked)), taken_(asked.rate_hz),
          to_(asked, callbacks_into(taken_, device_id_)) {}

    void run() {
        open();
        const auto printing =
            printer_for(format_, {title_, [this] { return to_.service().count().rejected; }, asked_.rate_hz});
        try {
            while (goes_on()) {
                ask_for_orientation();
                printing->show(taken_, false);
                tell_progress();
                std::this_thread::sleep_for(printing_period);
            }
            taken_.close();
            printing->show(taken_, true);
        } catch (const output_closed&) {
            taken_.close();
            is_closed_ = !is_interrupted();
        }
        finish();
    }

  private:
    void open() {
        chosen_ = to_.choose();
        if (chosen_.type != device_type::orvanta3) {
            throw failure_with_status(
                exit_status::no_device,
                formatted("device {} is a {}; watch shows an Orvanta3", chosen_.id, name_of(chosen_.type)));
        }
        title_ = formatted("{} {}  {}", name_of(chosen_.type), short_id_text(chosen_), chosen_.uuid);
        device_id_ = chosen_.id;
        to_.open(chosen_);
        began_ = std::chrono::system_clock::now();
        start_ = steady_clock::now();
        progress_due_ = start_ + progress_period;
    }

    [[nodiscard]] bool goes_on() const {
        const bool time_is_up = asked_.duration && steady_clock::now() - start_ >= *asked_.duration;
        return !time_is_up && !is_interrupted() && !taken_.end_reason();
    }

    // One at a time: a service that does not answer is not asked more.
    void ask_for_orientation() {
        const auto now = steady_clock::now();
        if (now < orientation_due_ || is_asking_.exchange(true)) {
            return;
        }
        orientation_due_ = now + orientation_period;
        to_.service().get_orientation(
            chosen_.id,
            [this](session&, const result<orientation>& answer) {
                if (answer) {
                    taken_.add(*answer);
                }
                is_asking_ = false;
            },
            orientation_patience);
    }

    void tell_progress() {
        const auto now = steady_clock::now();
        if (!asked_.duration || *asked_.duration < least_time_with_progress || now < progress_due_ ||
            output_is_terminal()) {
            return;
        }
        progress_due_ += progress_period;
        const live_view so_far = taken_.view(now);
        out_.note(formatted("{:.0f} s of {:.0f} s: {} samples, {:.1f} a second",
                            std::chrono::duration<double>(now - start_).count(),
                            std::chrono::duration<double>(*asked_.duration).count(), so_far.samples.count,
                            so_far.samples.rate_hz));
    }

    // All that was taken is written, whatever has ended it.
    void finish() {
        const std::optional<std::string> lost = taken_.end_reason();
        const live_view at_end = taken_.view(steady_clock::now());
        if (!asked_.plot.empty()) {
            write_whole(asked_.plot, svg_of(plot_of(taken_, at_end, title_, began_)));
        }
        if (is_closed_) {
            throw output_closed();
        }
        tell_losses(at_end);
        end_when_interrupted();
        if (lost) {
            throw failure_with_status(exit_status::lost, *lost, error_code::disconnected_from_service);
        }
        if (at_end.samples.count == 0) {
            throw failure_with_status(exit_status::timed_out, "no sample came; is the device switched on?",
                                      error_code::timed_out);
        }
    }

    void tell_losses(const live_view& at_end) {
        constexpr double least_told = 0.01;
        if (const std::uint64_t unprinted = taken_.unprinted(); unprinted > 0) {
            out_.note(formatted("{} of {} samples were not printed: the reader is too slow", unprinted,
                                at_end.samples.count));
        }
        if (format_ == watch_format::live) {
            return;
        }
        if (at_end.samples.missing.value_or(0) >= least_told) {
            out_.note(formatted("about {:.0f} % of the samples are missing", *at_end.samples.missing * 100));
        }
        if (const std::uint64_t rejected = to_.service().count().rejected; rejected > 0) {
            out_.note(formatted("{} messages of the service made no sense and were dropped", rejected));
        }
    }

    const request& asked_;
    output& out_;
    watch_format format_;
    recording taken_;
    std::atomic<std::uint32_t> device_id_{0};
    std::atomic<bool> is_asking_{false};
    device chosen_;
    std::string title_;
    std::chrono::system_clock::time_point began_;
    steady_clock::time_point start_;
    steady_clock::time_point orientation_due_{};
    steady_clock::time_point progress_due_;
    bool is_closed_{false};
    // Ends first: its callbacks use the others.
    connection to_;
};

} // namespace

void watch_device(const request& asked, output& out) {
    if (!asked.plot.empty()) {
        check_writable(asked.plot);
    }
    watching(asked, out).run();
}

} // namespace vantu::orvanta::ctl
