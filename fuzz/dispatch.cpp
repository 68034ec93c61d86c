// Class client's requests, dispatch, deadlines and cancels in any order: each handler is called once with
// what ended its request, each other event goes to its callback, and tags are used in turn.
#include "flat_api_stand_in.hpp"
#include "script.hpp"
#include "vantu/orvanta/client.hpp"
#include "waiting_model.hpp"

#include <chrono>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using namespace orvanta_fuzz;
using namespace vantu::orvanta;

constexpr std::array<std::uint8_t, 24> event_types{1,  2,  16, 17, 18, 19, 20, 21, 32, 48,  49,  50,
                                                   51, 64, 65, 66, 67, 80, 81, 96, 97, 112, 113, 255};

[[noreturn]] void fail(const char* what) {
    throw std::runtime_error(what);
}

void require(bool holds, const char* otherwise) {
    if (!holds) {
        fail(otherwise);
    }
}

class run {
  public:
    explicit run(script& input) : input_(input), client_(callbacks()) {
        on_request = [this](std::uint8_t tag) { return answer_request(tag); };
        now_ns = 1'000'000'000;
    }

    void take_step() {
        const std::uint8_t step = input_.byte();
        if (step < 96) {
            request(step);
        } else if (step < 104) {
            for (int i = 0; i < 64; ++i) {
                request(step);
            }
        } else if (step < 112) {
            begin_failing(input_.byte());
            client_.fail_requests(static_cast<std::int32_t>(*failing_code_));
            require_all_failed();
            failing_code_.reset();
        } else if (step < 240) {
            dispatch(next_event(step));
        } else if (step < 248) {
            now_ns += input_.byte();
            if (step % 2 == 0) {
                expiry_ = 0;
                client_.expire_requests();
                require_all_expired();
            }
        } else {
            cancel();
        }
        require(client_.next_deadline_ns() == waiting_.next_deadline_ns(), "another deadline comes next");
    }

  private:
    template <typename Record> auto record_callback(std::uint32_t type) {
        return [this, type](client& /*owner*/, unsigned device_id, const Record& record) {
            called_back(type, device_id);
            require(static_cast<const void*>(&record) == event_->payload, "a record is not the payload");
        };
    }

    auto device_callback(std::uint32_t type) {
        return [this, type](client& /*owner*/, unsigned device_id) { called_back(type, device_id); };
    }

    client::config callbacks() {
        client::config all;
        all.on_ack = device_callback(1);
        all.on_disconnected = [this](client& /*owner*/) {
            require_all_failed();
            failing_code_.reset();
            called_back(2, event_->device_id);
        };
        all.on_device = [this](client& /*owner*/, unsigned device_id, const vantu_orvanta_device& device) {
            called_back(16, device_id);
            vantu_orvanta_device expected{};
            std::memcpy(reinterpret_cast<std::byte*>(&expected) + 8, event_->payload, 20);
            require(std::memcmp(&expected, &device, sizeof device) == 0, "a listing has another record");
        };
        all.on_device_removed = device_callback(17);
        all.on_device_opened = device_callback(18);
        all.on_device_closed = device_callback(19);
        all.on_orvanta3_info = record_callback<vantu_orvanta_orvanta3_info>(20);
        all.on_palmetron_info = record_callback<vantu_orvanta_palmetron_info>(21);
        all.on_device_block = record_callback<vantu_orvanta_device_block>(32);
        all.on_cursor_state = record_callback<vantu_orvanta_cursor_state>(48);
        all.on_cursor_state_b = record_callback<vantu_orvanta_cursor_state>(49);
        all.on_palmetron_state = record_callback<vantu_orvanta_palmetron_state>(50);
        all.on_orientation = record_callback<vantu_orvanta_orientation>(51);
        all.on_config_save = record_callback<vantu_orvanta_config_save>(64);
        all.on_config_gravity_compensation = record_callback<vantu_orvanta_config_gravity_compensation>(65);
        all.on_config_torque_scaling = record_callback<vantu_orvanta_config_torque_scaling>(66);
        all.on_config_handedness = record_callback<vantu_orvanta_config_handedness>(67);
        all.on_status_motor_current = record_callback<vantu_orvanta_status_motor_current>(80);
        all.on_status_power_supply = record_callback<vantu_orvanta_status_power_supply>(81);
        all.on_service_stream_a = [this](client& /*owner*/, const vantu_orvanta_service_stream_a& record) {
            called_back(96, event_->device_id);
            require(static_cast<const void*>(&record) == event_->payload, "a record is not the payload");
        };
        all.on_service_stream_b = record_callback<vantu_orvanta_service_stream_b>(97);
        all.on_table_block_128 = record_callback<vantu_orvanta_table_block_128>(112);
        all.on_table_block_301 = record_callback<vantu_orvanta_table_block_301>(113);
        all.on_error = record_callback<vantu_orvanta_error>(255);
        return all;
    }

    void called_back(std::uint32_t type, unsigned device_id) {
        require(event_ != nullptr && event_->event_type == type && event_->device_id == device_id,
                "a callback of another event was called");
        require(expects_callback_, "a callback was called beside a handler");
        expects_callback_ = false;
    }

    template <typename Record> reply_handler<Record> handler(bool wanted) {
        if (!wanted) {
            return {};
        }
        return [this, serial = last_serial_](client& /*owner*/, const reply<Record>& got) {
            const void* record = nullptr;
            if constexpr (!std::is_void_v<Record>) {
                record = got.record;
            }
            answered(serial, got.result, got.device_id, record, got.error, std::is_void_v<Record>);
        };
    }

    void answered(std::uint64_t serial, outcome result, unsigned device_id, const void* record,
                  const vantu_orvanta_error* error, bool has_no_record) {
        require(event_ != nullptr || failing_code_ || expiry_, "a handler was called outside dispatch");
        if (result == outcome::timed_out) {
            expired(serial, device_id, record, error);
        } else if (failing_code_) {
            auto next = waiting_.take_next(failed_tag_, newest_);
            while (next && !next->has_handler) {
                next = waiting_.take_next(failed_tag_, newest_);
            }
            require(next && next->serial == serial, "an end came to another request than the next");
            require(result == outcome::failed && device_id == 0 && record == nullptr && error != nullptr &&
                        error->status == *failing_code_,
                    "an end gave something else than its error");
        } else {
            require(serial == expected_serial_, "another request's handler was called, or one twice");
            expected_serial_ = 0;
            require(device_id == event_->device_id, "a reply names another device");
            const bool replied = event_->event_type != 1 && event_->event_type != 255;
            require(result == (replied                     ? outcome::replied
                               : event_->event_type == 255 ? outcome::failed
                                                           : outcome::acknowledged),
                    "a request ended in another way");
            require(record == (replied && !has_no_record ? event_->payload : nullptr),
                    "a reply has another record");
            require(static_cast<const void*>(error) ==
                        (event_->event_type == 255 ? event_->payload : nullptr),
                    "a reply has another error");
        }
        if (const std::uint8_t choice = input_.byte(); choice < 64) {
            request(choice);
        } else if (choice < 72) {
            cancel();
        }
    }

    void expired(std::uint64_t serial, unsigned device_id, const void* record,
                 const vantu_orvanta_error* error) {
        require(!failing_code_ && !expects_callback_ && expected_serial_ == 0 && expiry_,
                "a deadline was looked at too early");
        if (*expiry_ == 0) {
            expiry_ = last_serial_;
        }
        auto next = waiting_.take_expired(now_ns, *expiry_);
        while (next && !next->has_handler) {
            next = waiting_.take_expired(now_ns, *expiry_);
        }
        require(next && next->serial == serial, "another request's deadline was due");
        require(device_id == 0 && record == nullptr && error != nullptr &&
                    error->status == vantu_orvanta_timed_out,
                "a deadline gave something else than its error");
    }

    void require_all_expired() {
        const std::uint64_t newest = *expiry_ == 0 ? last_serial_ : *expiry_;
        expiry_.reset();
        while (const auto dropped = waiting_.take_expired(now_ns, newest)) {
            require(!dropped->has_handler, "a deadline passed and its handler waits");
        }
    }

    void cancel() {
        if (sent_.empty()) {
            require(!client_.cancel({}), "no request was cancelled");
            return;
        }
        const sent_request& one = sent_[input_.number(2) % sent_.size()];
        require(client_.cancel(one.ticket) == waiting_.withdraw(one.tag, one.serial),
                "a cancel returned something else");
    }

    void request(std::uint8_t step) {
        const std::uint64_t serial = ++last_serial_;
        const bool wanted = step % 16 != 15;
        const bool was_full = waiting_.is_full();
        constexpr std::array<std::uint32_t, 9> answers{18, 19, 51, 64, 65, 65, 66, 66, 67};
        const std::uint8_t choice = input_.byte();
        const std::size_t kind = choice % answers.size();
        const std::chrono::nanoseconds timeout =
            choice < 128 ? std::chrono::nanoseconds::max() : std::chrono::nanoseconds(choice - 136);
        const std::int64_t deadline_ns = choice < 128   ? waiting_model::never_ns
                                         : choice < 136 ? now_ns
                                                        : now_ns + choice - 136;
        expected_tag_ =
            was_full ? std::uint8_t{0} : waiting_.enter(answers[kind], serial, wanted, deadline_ns);
        const std::uint8_t tag = expected_tag_;
        sent_code_ = -1;
        request_ticket ticket;
        const std::int32_t code = ask(kind, wanted, {timeout, &ticket});
        require((ticket == request_ticket{}) == was_full, "a ticket names no request");
        if (was_full) {
            require(code == vantu_orvanta_request_queue_full && sent_code_ == -1, "a request had no tag");
            return;
        }
        sent_.push_back({ticket, tag, serial});
        require(sent_code_ != -1, "a request was not sent");
        const bool failed = sent_code_ != 0 && waiting_.withdraw(tag, serial);
        require(code == (failed ? sent_code_ : 0), "a request returned another code");
    }

    std::int32_t ask(std::size_t kind, bool wanted, const request_options& options) {
        switch (kind) {
        case 0:
            return client_.device_open(1, 0, handler<void>(wanted), options);
        case 1:
            return client_.device_close(1, handler<void>(wanted), options);
        case 2:
            return client_.orientation_get(1, handler<vantu_orvanta_orientation>(wanted), options);
        case 3:
            return client_.config_save(1, handler<vantu_orvanta_config_save>(wanted), options);
        case 4:
            return client_.config_gravity_compensation_get(
                1, handler<vantu_orvanta_config_gravity_compensation>(wanted), options);
        case 5:
            return client_.config_gravity_compensation_set(
                1, {}, handler<vantu_orvanta_config_gravity_compensation>(wanted), options);
        case 6:
            return client_.config_torque_scaling_get(1, handler<vantu_orvanta_config_torque_scaling>(wanted),
                                                     options);
        case 7:
            return client_.config_torque_scaling_set(
                1, {}, handler<vantu_orvanta_config_torque_scaling>(wanted), options);
        default:
            return client_.config_handedness_set(1, 1, handler<vantu_orvanta_config_handedness>(wanted),
                                                 options);
        }
    }

    // The send of a request: refused, or answered before it returns, or neither.
    std::int32_t answer_request(std::uint8_t tag) {
        require(tag == expected_tag_ && tag != 0, "a request has another tag than the one longest free");
        const std::uint8_t choice = input_.byte();
        const std::int32_t code = choice % 4 == 1 ? vantu_orvanta_invalid_connection_state : 0;
        if (choice >= 192 && event_ == nullptr && !failing_code_ && !expiry_) {
            vantu_orvanta_event event = next_event(choice);
            event.tag = choice >= 224 ? tag : event.tag;
            dispatch(event);
        }
        sent_code_ = code;
        return code;
    }

    vantu_orvanta_event next_event(std::uint8_t step) {
        vantu_orvanta_event event{};
        const std::uint8_t choice = input_.byte();
        event.event_type = choice < 10 * event_types.size() ? event_types[choice % event_types.size()]
                           : choice == 255                  ? static_cast<std::uint32_t>(input_.number(4))
                                                            : choice - 240U;
        event.tag = input_.byte();
        event.device_id = step;
        std::memset(event.payload, step, sizeof event.payload);
        return event;
    }

    // The requests that wait now end with this code; those that handlers enter meanwhile do not.
    void begin_failing(std::uint32_t code) {
        failing_code_ = code;
        failed_tag_ = 0;
        newest_ = last_serial_;
    }

    void require_all_failed() {
        while (const auto dropped = waiting_.take_next(failed_tag_, newest_)) {
            require(!dropped->has_handler, "an end left a handler waiting");
        }
    }

    void dispatch(const vantu_orvanta_event& event) {
        event_ = &event;
        if (event.event_type == vantu_orvanta_event_disconnected) {
            begin_failing(vantu_orvanta_disconnected_from_service);
        }
        expected_serial_ = 0;
        const bool is_known =
            std::find(event_types.begin(), event_types.end(), event.event_type) != event_types.end();
        expects_callback_ = is_known;
        if (event.tag != 0 && is_known && event.event_type != vantu_orvanta_event_disconnected) {
            if (const auto taken = waiting_.take(event.event_type, event.tag)) {
                expects_callback_ = false;
                expected_serial_ = taken->has_handler ? taken->serial : 0;
            }
        }
        expiry_ = 0;
        const bool result = client_.dispatch(event);
        require(result == (event.event_type != 0), "dispatch returned something else");
        require(!expects_callback_ && expected_serial_ == 0, "an event went nowhere");
        require_all_expired();
        event_ = nullptr;
    }

    struct sent_request {
        request_ticket ticket;
        std::uint8_t tag;
        std::uint64_t serial;
    };

    script& input_;
    waiting_model waiting_;
    const vantu_orvanta_event* event_{nullptr}; // being dispatched
    bool expects_callback_{false};
    std::uint64_t expected_serial_{0};          // of the request that the event ends
    std::optional<std::uint32_t> failing_code_; // while an end of the connection ends the requests
    std::uint8_t failed_tag_{0};                // up to which it has
    std::uint64_t newest_{0};                   // the last request that it ends
    std::optional<std::uint64_t>
        expiry_; // while deadlines are looked at: the newest request that counts, or 0
    std::vector<sent_request> sent_;
    std::uint8_t expected_tag_{0};
    std::int32_t sent_code_{-1};
    std::uint64_t last_serial_{0};
    client client_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    script input(data, size);
    run one(input);
    while (!input.has_ended()) {
        one.take_step();
    }
    return 0;
}
