// The part of a program that keeps an eye on the first Orvanta3, whatever becomes of the service.
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

    // Does what there is to do now: connects, opens the device, takes what it measures, and begins anew when
    // the service has forgotten us. To be called over and over; returns at once while all is well, and within
    // a fifth of a second when it is not.
    void turn();

    [[nodiscard]] bool sees_a_device() const { return device_id_ != 0; }
    [[nodiscard]] std::size_t states() const { return states_; }
    [[nodiscard]] std::size_t connections() const { return connections_; }
    [[nodiscard]] const vantu_orvanta_cursor_state& last_state() const { return last_state_; }

  private:
    void connect();
    void find_device();
    void take_events();

    std::string service_port_;
    std::unique_ptr<vantu::orvanta::client> client_; // null: not connected
    bool lost_{false};
    std::uint32_t device_id_{0};
    std::int64_t last_word_ns_{0}; // from the device, or ours to it
    std::size_t states_{0};
    std::size_t connections_{0};
    vantu_orvanta_cursor_state last_state_{};
};
