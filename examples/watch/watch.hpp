// The part of a program that watches the first Orvanta3, whatever happens to the service.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vantu/orvanta/client.hpp>

class watch {
  public:
    // The service's port; 54320 is its own.
    explicit watch(std::string service_port);

    // One step: connects, opens the device, takes its states, and begins anew when the service has forgotten
    // this client. Call it in a loop. It returns at once while all is well, else within a fifth of a second.
    void turn();

    [[nodiscard]] bool sees_a_device() const { return device_id_ != 0; }
    [[nodiscard]] std::size_t states() const { return states_; }
    [[nodiscard]] std::size_t connections() const { return connections_; }
    // Requests whose answer is awaited: one at most.
    [[nodiscard]] int waiting() const { return waiting_; }
    [[nodiscard]] const vantu_orvanta_cursor_state& last_state() const { return last_state_; }

  private:
    void connect();
    void find_device();
    void open_device();
    // The code that ended the polls; 8 when it was the service's goodbye or nothing.
    std::int32_t take_events();

    std::string service_port_;
    std::unique_ptr<vantu::orvanta::client> client_; // null: not connected
    bool lost_{false};
    std::uint32_t device_id_{0};
    std::int64_t last_word_ns_{0}; // the device's last state, or the last request to it
    int waiting_{0};
    std::size_t states_{0};
    std::size_t connections_{0};
    vantu_orvanta_cursor_state last_state_{};
};
