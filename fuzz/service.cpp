// The simulator's service core: datagrams of many clients, times and what happens to devices in any order.
// All that it sends can be read by the protocol's rules, goes to somebody who spoke, and answers each
// request.
#include "simulator/service/service.hpp"
#include "script.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <set>
#include <stdexcept>
#include <vector>

namespace {

using namespace orvanta_fuzz;
using namespace vantu::orvanta::simulator;
using orvanta_tests::octets;

void require(bool holds, const char* otherwise) {
    if (!holds) {
        throw std::runtime_error(otherwise);
    }
}

struct known_request {
    std::uint8_t code;
    std::uint8_t body;
    std::uint8_t answer; // 0: none
};

constexpr std::array<known_request, 12> requests{{{1, 0, 0},
                                                  {3, 112, 4},
                                                  {5, 0, 6},
                                                  {18, 6, 19},
                                                  {20, 4, 21},
                                                  {47, 4, 47},
                                                  {64, 4, 64},
                                                  {66, 4, 66},
                                                  {67, 9, 66},
                                                  {68, 4, 68},
                                                  {69, 5, 68},
                                                  {71, 5, 70}}};

struct sent_operation {
    std::uint64_t to;
    std::uint8_t code;
    std::uint8_t tag;
};

peer peer_of(std::uint64_t number) {
    peer made;
    made.address.length = 2;
    made.address.address.bytes[0] = static_cast<std::byte>(number);
    made.address.address.bytes[1] = static_cast<std::byte>(number >> 8);
    return made;
}

std::uint64_t number_of(const peer& one) {
    return std::to_integer<std::uint64_t>(one.address.address.bytes[0]) +
           256 * std::to_integer<std::uint64_t>(one.address.address.bytes[1]);
}

service_settings settings_of(script& input) {
    constexpr std::array rates{0.0, 1.0, 100.0, 10'000.0};
    service_settings settings;
    const std::uint8_t choice = input.byte();
    settings.announce = choice % 2 != 0 ? announce_order::before : announce_order::after;
    settings.single_client = choice % 16 == 2;
    settings.rate_hz = rates[choice / 16 % rates.size()];
    settings.save = [choice](const device&) { return choice % 8 != 4; };
    return settings;
}

class run {
  public:
    explicit run(script& input)
        : input_(input), service_(settings_of(input), make_devices(input.byte() % 8, input.byte() % 8)) {}

    void take_step() {
        const std::uint8_t step = input_.byte();
        if (step < 160) {
            receive(step);
        } else if (step < 208) {
            pass_time(step);
        } else {
            happen(step);
        }
        (void)take_sent();
        require(service_.clients().size() <= 256, "more clients than there is room for");
    }

  private:
    void receive(std::uint8_t step) {
        from_ = step % 8 == 7 ? input_.number(2) % 512 : step % 8;
        heard_.insert(from_);
        bytes_.clear();
        if (step < 32) {
            const auto raw = input_.bytes(input_.number(2) % 2049);
            bytes_.assign(reinterpret_cast<const std::byte*>(raw.data()),
                          reinterpret_cast<const std::byte*>(raw.data() + raw.size()));
            service_.receive(peer_of(from_), bytes_, now_ns_);
            return;
        }
        for (const int value : {0xE9, 0x9E, 1, 0, 0, 0}) {
            bytes_.push_back(static_cast<std::byte>(value));
        }
        const int count = step < 128 ? 1 : step % 4 + 2;
        known_request last{};
        std::uint8_t tag = 0;
        for (int i = 0; i < count; ++i) {
            last = requests[input_.byte() % requests.size()];
            tag = input_.byte();
            append(last, tag);
        }
        if (count > 1) {
            service_.receive(peer_of(from_), bytes_, now_ns_);
            return;
        }
        const damage done = spoil_now_and_then(last);
        // A copy without room after its end, which a read too far would not leave unseen.
        const std::unique_ptr<std::byte[]> exact(new std::byte[bytes_.size()]);
        std::copy(bytes_.begin(), bytes_.end(), exact.get());
        service_.receive(peer_of(from_), {exact.get(), bytes_.size()}, now_ns_);
        check_answer(last, tag, done);
    }

    enum class damage : std::uint8_t { none, of_body, of_record };

    // A body cut short, or a length that is not the body's.
    damage spoil_now_and_then(const known_request& request) {
        constexpr std::size_t place_of_length = 8;
        constexpr std::uint8_t lies = 192;
        constexpr std::uint8_t cuts = 208;
        const std::uint8_t choice = input_.byte();
        if (choice >= cuts) {
            const std::size_t cut = choice - cuts + 1U;
            bytes_.resize(bytes_.size() - std::min<std::size_t>(cut, request.body + 5U));
            return cut <= request.body ? damage::of_body : damage::of_record;
        }
        if (choice >= lies) {
            bytes_[place_of_length] = static_cast<std::byte>(request.body + 1 + choice - lies);
            return damage::of_body;
        }
        return damage::none;
    }

    void append(const known_request& request, std::uint8_t tag) {
        for (const int value : {0xFF, int{request.code}, int{request.body}, 0, int{tag}}) {
            bytes_.push_back(static_cast<std::byte>(value));
        }
        // A device's id, of which the high bytes are seldom not 0, and then anything.
        const std::uint8_t device = input_.byte();
        const std::uint8_t rest = input_.byte();
        for (std::size_t i = 0; i < request.body; ++i) {
            const std::size_t value = request.code == 3 ? (i > 3 && i < 10 ? rest : device * (i % 3))
                                      : i == 0          ? device
                                      : i == 1          ? (device > 200 ? 3 : 0)
                                      : i < 4           ? 0
                                                        : rest;
            bytes_.push_back(static_cast<std::byte>(value));
        }
    }

    void check_answer(const known_request& request, std::uint8_t tag, damage done) {
        const std::vector<sent_operation> sent = take_sent();
        const auto answered_with = [&](std::uint8_t code) {
            return std::any_of(sent.begin(), sent.end(), [&](const sent_operation& one) {
                return one.to == from_ && one.tag == tag && one.code == code;
            });
        };
        constexpr std::uint8_t refusal = 240;
        if (done == damage::of_body) {
            require(sent.size() == 1 && answered_with(refusal), "a damaged request was not refused");
        } else if (done == damage::of_record || request.answer == 0) {
            require(sent.empty(), "what asks for nothing was answered");
        } else {
            require(answered_with(request.answer) || answered_with(refusal), "a request was not answered");
        }
    }

    void pass_time(std::uint8_t step) {
        now_ns_ += step % 4 == 0 ? static_cast<std::int64_t>(input_.number(4)) : std::int64_t{1} << step % 32;
        const std::int64_t due_ns = service_.next_due_ns();
        if (step % 4 == 1 && due_ns != never_ns) {
            now_ns_ = std::max(now_ns_, due_ns);
        }
        service_.tick(now_ns_);
        require(service_.next_due_ns() > now_ns_, "what was due stays due");
    }

    void happen(std::uint8_t step) {
        const std::uint8_t choice = input_.byte();
        switch (step % 8) {
        case 0:
            service_.say_goodbye();
            require(service_.clients().empty(), "a goodbye left clients");
            return;
        case 1:
            service_.say_goodbye_to(peer_of(choice % 8));
            return;
        case 2:
            service_.restart(make_devices(choice % 16, choice / 16));
            return;
        case 3:
        case 4:
            (void)service_.plug(make_device(static_cast<std::uint8_t>(step % 2 + 1), choice));
            return;
        case 5:
            (void)service_.unplug(choice < 128 ? choice : choice + 873U);
            return;
        default:
            (void)service_.configure(
                choice, {step % 16 > 7, 0.5F, step % 32 > 15, static_cast<std::uint8_t>(step / 32 % 2 + 1)});
        }
    }

    // The service's datagrams, read by the protocol's rules.
    std::vector<sent_operation> take_sent() {
        std::vector<sent_operation> all;
        for (const outgoing_datagram& one : service_.take_outgoing()) {
            const std::uint64_t to = number_of(one.to);
            require(heard_.count(to) != 0, "a datagram for somebody who never spoke");
            read({one.bytes.unread(), one.bytes.read_len()}, to, all);
        }
        return all;
    }

    static void read(octets bytes, std::uint64_t to, std::vector<sent_operation>& all) {
        constexpr std::array<int, 6> header{0xE9, 0x9E, 1, 0, 0, 0};
        require(bytes.size() > header.size() && bytes.size() <= 2048, "a datagram of a wrong size");
        for (std::size_t i = 0; i < header.size(); ++i) {
            require(std::to_integer<int>(bytes[i]) == header[i], "a datagram with another header");
        }
        bytes = bytes.subspan(header.size());
        while (!bytes.empty()) {
            require(bytes.size() >= 5 && bytes[0] == std::byte{0xFF}, "no operation where one should be");
            const auto code = std::to_integer<std::uint8_t>(bytes[1]);
            const std::size_t length =
                std::to_integer<std::size_t>(bytes[2]) + 256 * std::to_integer<std::size_t>(bytes[3]);
            all.push_back({to, code, std::to_integer<std::uint8_t>(bytes[4])});
            bytes = bytes.subspan(5);
            std::size_t body = code == 4 ? 8 : not_sent;
            for (const orvanta_tests::operation_size& known : orvanta_tests::operation_sizes()) {
                body = known.code == code ? known.body : body;
            }
            require(body <= bytes.size(), "an operation that is cut short");
            if (code == 40) {
                body += std::to_integer<std::size_t>(bytes[21]); // the tail
            }
            require(body == length && body <= bytes.size(), "an operation of a wrong length");
            bytes = bytes.subspan(body);
        }
    }

    static constexpr std::size_t not_sent = 100'000;

    script& input_;
    service service_;
    std::set<std::uint64_t> heard_;
    std::uint64_t from_{0};
    std::vector<std::byte> bytes_;
    std::int64_t now_ns_{0};
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
