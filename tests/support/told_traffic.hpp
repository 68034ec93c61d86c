// The datagrams of which a traffic sink is told, kept and put into words.
#pragma once

#include "support/bytes.hpp"
#include "vantu/orvanta/traffic.h"

#include <cstdint>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace orvanta_tests {

// "127.0.0.1:54321" or "[::1]:54321"; "unknown" for anything else.
[[nodiscard]] inline std::string text_of(const vantu_orvanta_traffic_address& one) {
    const bytes address(one.address, one.address + 16);
    const std::string port = ":" + std::to_string(one.port);
    if (one.version == 4 && address == join({{127, 0, 0, 1}, filled(12, 0)})) {
        return "127.0.0.1" + port;
    }
    if (one.version == 6 && address == join({filled(15, 0), {1}})) {
        return "[::1]" + port;
    }
    return "unknown";
}

// The sink of one context at a time.
class told_traffic {
  public:
    struct entry {
        vantu_orvanta_traffic record;
        bytes content;

        [[nodiscard]] bool is_sent() const { return record.way == vantu_orvanta_traffic_sent; }
    };

    // Begins with the next call of the library.
    void listen_to(vantu_orvanta_context* context,
                   std::function<void(const vantu_orvanta_traffic&)> also = {}) {
        also_ = std::move(also);
        EXPECT_EQ(vantu_orvanta_traffic_sink_set(context, take, this), vantu_orvanta_success);
    }

    [[nodiscard]] std::vector<entry> entries() const {
        const std::lock_guard lock(mutex_);
        return entries_;
    }
    // "> E9 9E" for what was sent, "< E9 9E" for what came.
    [[nodiscard]] std::vector<std::string> lines() const {
        std::vector<std::string> texts;
        for (const entry& one : entries()) {
            texts.push_back((one.is_sent() ? "> " : "< ") + hex(one.content));
        }
        return texts;
    }

  private:
    static void take(void* user_data, const vantu_orvanta_traffic* told) {
        auto& self = *static_cast<told_traffic*>(user_data);
        {
            const std::lock_guard lock(self.mutex_);
            self.entries_.push_back({*told, bytes(told->bytes, told->bytes + told->length)});
            self.entries_.back().record.bytes = nullptr;
        }
        if (self.also_) {
            self.also_(*told);
        }
    }

    mutable std::mutex mutex_;
    std::vector<entry> entries_;
    std::function<void(const vantu_orvanta_traffic&)> also_;
};

} // namespace orvanta_tests
