// Counts what a harness did beside its runs, and prints it at the end of the program.
#pragma once

#include <cstdint>
#include <cstdio>

namespace orvanta_fuzz {

class tally {
  public:
    explicit tally(const char* name) : name_(name) {}
    ~tally() { std::fprintf(stderr, "%s: %llu\n", name_, static_cast<unsigned long long>(count_)); }
    tally(const tally&) = delete;
    tally& operator=(const tally&) = delete;

    void add(std::uint64_t more) { count_ += more; }

  private:
    const char* name_;
    std::uint64_t count_{0};
};

} // namespace orvanta_fuzz
