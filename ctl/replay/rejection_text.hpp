// The reasons for which the core does not take a datagram, for people.
#pragma once

#include "core/rejection.hpp"
#include "vantu/orvanta/communication/header.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

namespace vantu::orvanta::ctl {

[[nodiscard]] std::string text_of(const rejection& rejected);

// The answer to a connect that failed with this code.
[[nodiscard]] std::string text_of_refused_answer(std::int32_t code, const rejection& rejected);

// An operation that is not decoded, of whose body so many bytes are there.
[[nodiscard]] std::string text_of_refused_operation(const communication::proto::op& op,
                                                    std::size_t body_size);

} // namespace vantu::orvanta::ctl
