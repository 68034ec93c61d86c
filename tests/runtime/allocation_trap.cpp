// Replaces operator new, and through the linker malloc, calloc and realloc, with counting ones.
#include "allocation_trap.hpp"

#include <cstdlib>
#include <new>

namespace {

thread_local bool armed = false;
thread_local std::size_t counted = 0;

void count_one() {
    counted += armed ? 1 : 0;
}

} // namespace

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the linker's names
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_calloc(std::size_t count, std::size_t size);
void* __real_realloc(void* at, std::size_t size);

void* __wrap_malloc(std::size_t size) {
    count_one();
    return __real_malloc(size);
}

void* __wrap_calloc(std::size_t count, std::size_t size) {
    count_one();
    return __real_calloc(count, size);
}

void* __wrap_realloc(void* at, std::size_t size) {
    count_one();
    return __real_realloc(at, size);
}
}

namespace {

void* allocate(std::size_t size) {
    count_one();
    return __real_malloc(size == 0 ? 1 : size);
}

} // namespace
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

void* operator new(std::size_t size) {
    void* at = allocate(size);
    return at != nullptr ? at : throw std::bad_alloc();
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* at) noexcept {
    std::free(at);
}
void operator delete[](void* at) noexcept {
    std::free(at);
}
void operator delete(void* at, std::size_t) noexcept {
    std::free(at);
}
void operator delete[](void* at, std::size_t) noexcept {
    std::free(at);
}
void operator delete(void* at, const std::nothrow_t&) noexcept {
    std::free(at);
}
void operator delete[](void* at, const std::nothrow_t&) noexcept {
    std::free(at);
}

namespace orvanta_tests {

allocation_trap::allocation_trap() {
    counted = 0;
    armed = true;
}

allocation_trap::~allocation_trap() {
    armed = false;
}

std::size_t allocation_trap::allocations() {
    return counted;
}

} // namespace orvanta_tests
