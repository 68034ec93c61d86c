#include "simulator/control/control_scripts.hpp"

#include "simulator/control/line_splitter.hpp"

#include <string_view>
#include <utility>
#include <vector>

namespace vantu::orvanta::simulator {

class control_scripts::script {
  public:
    script(socket_handle socket, std::string token, const make_console& make)
        : connection_(socket), token_(std::move(token)),
          console_(make([this](std::string_view text) { print(text); })) {}

    void attend(std::int64_t now_ns) {
        const bool gone = connection_.is_gone();
        for (int pieces = 0; pieces < most_pieces && awaits_lines(); ++pieces) {
            const std::string bytes = connection_.receive();
            take(connection_.has_ended() ? splitter_.end() : splitter_.take(bytes));
            if (bytes.empty()) {
                break;
            }
            console_.attend(now_ns);
        }
        if (!shut_out_) {
            console_.attend(now_ns);
            send();
        }
        // Lines after a wait are not done for a script that is gone.
        over_ = shut_out_ || (console_.is_waiting() ? gone : connection_.has_ended() && unsent_.empty());
    }

    [[nodiscard]] bool is_over() const noexcept { return over_; }

  private:
    // So many of the connection's pieces are taken before others have their turn.
    static constexpr int most_pieces = 16;

    // A script that waits keeps its further lines, so that they fill no memory here.
    [[nodiscard]] bool awaits_lines() const noexcept {
        return !shut_out_ && !connection_.has_ended() && !console_.is_waiting();
    }

    void take(std::vector<std::string> lines) {
        for (std::string& line : lines) {
            if (!token_.empty()) {
                shut_out_ = shut_out_ || line != token_;
                token_.clear();
            } else if (!shut_out_) {
                console_.take(std::move(line));
            }
        }
    }

    void print(std::string_view text) {
        if (!shut_out_) {
            unsent_ += text;
            send();
            shut_out_ = unsent_.size() > most_unread_bytes;
        }
    }

    void send() {
        if (!unsent_.empty()) {
            unsent_.erase(0, connection_.send(unsent_));
        }
        if (connection_.is_gone()) {
            unsent_.clear();
        }
    }

    control_connection connection_;
    line_splitter splitter_;
    std::string token_; // awaited as the first line; empty: none any more
    std::string unsent_;
    bool shut_out_{false};
    bool over_{false};
    console console_;
};

control_scripts::control_scripts(std::string path, make_console make)
    : socket_(std::move(path)), make_(std::move(make)) {}

control_scripts::~control_scripts() = default;

void control_scripts::attend(std::int64_t now_ns) {
    while (scripts_.size() < most_scripts) {
        const socket_handle next = socket_.accept();
        if (next == invalid_socket) {
            break;
        }
        scripts_.emplace_back(next, socket_.token(), make_);
    }
    for (script& one : scripts_) {
        one.attend(now_ns);
    }
    scripts_.remove_if([](const script& one) { return one.is_over(); });
}

} // namespace vantu::orvanta::simulator
