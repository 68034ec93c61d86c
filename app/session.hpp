// The state that every menu works on, and the check of its requests.
#pragma once

#include "app/console.hpp"
#include "app/state.hpp"

#include "vantu/orvanta/client.hpp"

#include <cstdint>

namespace vantu::orvanta::app {

struct session {
    console& terminal;
    client& connection;
    application_state& state;
};

// Throws exception, without a label, unless the code is 0.
inline void check_request(std::int32_t code) {
    if (code != 0) {
        throw exception(static_cast<std::uint32_t>(code));
    }
}

} // namespace vantu::orvanta::app
