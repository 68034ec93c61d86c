// orvantactl replay: shows what the library makes of a capture.
#include "ctl/replay/replay.hpp"

#include "ctl/arguments/request.hpp"
#include "ctl/commands/commands.hpp"
#include "ctl/replay/replay_text.hpp"
#include "ctl/report/interruption.hpp"
#include "ctl/report/output.hpp"
#include "shared/capture_file.hpp"
#include "vantu/orvanta/common/format.hpp"

#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>

namespace vantu::orvanta::ctl {
namespace {

class replaying {
  public:
    explicit replaying(const output& out) : out_(out) {}

    void run(const std::string& path) {
        try {
            capture_reader file(path);
            while (const auto one = read(file)) {
                end_when_interrupted();
                played_.play(*one);
            }
        } catch (const unreadable& why) {
            summarise();
            throw failure_with_status(exit_status::refused, why.what());
        } catch (const failure_with_status&) {
            throw;
        } catch (const std::runtime_error& why) {
            throw failure_with_status(exit_status::refused, why.what());
        }
        if (played_.counts().datagrams == 0) {
            throw failure_with_status(exit_status::refused,
                                      formatted("{} has no datagram of a device service", path));
        }
        summarise();
    }

  private:
    // The file ends too early: what was read before counts.
    struct unreadable : std::runtime_error {
        using std::runtime_error::runtime_error;
    };

    static std::optional<captured_datagram> read(capture_reader& from) {
        try {
            return from.next();
        } catch (const std::runtime_error& why) {
            throw unreadable(why.what());
        }
    }

    void tell(const replayed& one) {
        if (!first_) {
            first_ = one.client;
        }
        has_several_ = has_several_ || one.client != *first_;
        out_.result(document_of(one), line_of(one, has_several_));
    }

    void summarise() const {
        out_.note(line_of(played_.counts()));
        if (out_.in_json()) {
            out_.result(document_of(played_.counts()), "");
        }
    }

    const output& out_;
    std::optional<socket_place> first_;
    bool has_several_{false};
    capture_replay played_{[this](const replayed& one) { tell(one); }};
};

} // namespace

void replay_capture(const request& asked, output& out) {
    replaying(out).run(asked.words.front());
}

} // namespace vantu::orvanta::ctl
