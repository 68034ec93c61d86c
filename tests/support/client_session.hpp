// A client object that is connected to a scripted service.
#pragma once

#include "support/service_session.hpp"
#include "vantu/orvanta/client.hpp"

#include <cstdint>
#include <memory>

namespace orvanta_tests {

// The next event of a hand-made kind: type, device 5, tag and payload.
[[nodiscard]] vantu_orvanta_event make_event(std::uint32_t type, std::uint8_t tag = 0,
                                             const bytes& payload = {});

// Connected when it is built; the client is destroyed, goodbye included, with it.
class client_session {
  public:
    explicit client_session(vantu::orvanta::client::config callbacks = {});
    ~client_session();
    client_session(const client_session&) = delete;
    client_session& operator=(const client_session&) = delete;

    [[nodiscard]] scripted_service& service() { return session_.service; }
    [[nodiscard]] vantu::orvanta::client& client() { return *client_; }

    // Expects a request of one operation under any tag.
    void expect(std::uint8_t code, const bytes& body);
    // Waits for it and returns its tag.
    [[nodiscard]] std::uint8_t tag_of_last_request();
    // Sends one operation to the client and dispatches the events that it makes.
    void receive(const bytes& operation);
    // Destroys the client now.
    void destroy_client();

  private:
    std::unique_ptr<vantu::orvanta::client> client_;
    service_session session_;
};

} // namespace orvanta_tests
