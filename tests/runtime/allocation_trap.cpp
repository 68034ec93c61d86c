// Replaces operator new, and through the linker malloc, calloc and realloc, with counting ones.
#include "allocation_trap.hpp"

#include <cstdlib>
#include <new>

namespace {

thread_local bool armed = false;
thread_local std::size_t counted = 0;
thread_local std::ptrdiff_t kept = 0;
thread_local std::size_t until_failure = 0; // 0: none is to fail
thread_local bool failed = false;

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

// Counts an allocation; true when it is the one that is to fail.
bool is_to_fail() {
    count_one();
    if (until_failure == 0 || --until_failure != 0) {
        return false;
    }
    failed = true;
    return true;
}

void* counted_block(void* at) {
    kept += armed && at != nullptr ? 1 : 0;
    return at;
}

void* allocate(std::size_t size) {
    return is_to_fail() ? nullptr : counted_block(__real_malloc(size == 0 ? 1 : size));
}

void* allocate(std::size_t size, std::align_val_t alignment) {
    const auto step = static_cast<std::size_t>(alignment);
    return is_to_fail() ? nullptr : counted_block(std::aligned_alloc(step, (size + step - 1) / step * step));
}

void release(void* at) {
    kept -= armed && at != nullptr ? 1 : 0;
    std::free(at);
}

void* or_throw(void* at) {
    return at != nullptr ? at : throw std::bad_alloc();
}

} // namespace
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

void* operator new(std::size_t size) {
    return or_throw(allocate(size));
}
void* operator new[](std::size_t size) {
    return or_throw(allocate(size));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return or_throw(allocate(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return or_throw(allocate(size, alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocate(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocate(size, alignment);
}
void operator delete(void* at) noexcept {
    release(at);
}
void operator delete[](void* at) noexcept {
    release(at);
}
void operator delete(void* at, std::size_t) noexcept {
    release(at);
}
void operator delete[](void* at, std::size_t) noexcept {
    release(at);
}
void operator delete(void* at, std::align_val_t) noexcept {
    release(at);
}
void operator delete[](void* at, std::align_val_t) noexcept {
    release(at);
}
void operator delete(void* at, std::size_t, std::align_val_t) noexcept {
    release(at);
}
void operator delete[](void* at, std::size_t, std::align_val_t) noexcept {
    release(at);
}
void operator delete(void* at, const std::nothrow_t&) noexcept {
    release(at);
}
void operator delete[](void* at, const std::nothrow_t&) noexcept {
    release(at);
}
void operator delete(void* at, std::align_val_t, const std::nothrow_t&) noexcept {
    release(at);
}
void operator delete[](void* at, std::align_val_t, const std::nothrow_t&) noexcept {
    release(at);
}

namespace orvanta_tests {

allocation_trap::allocation_trap() {
    counted = 0;
    kept = 0;
    armed = true;
}

allocation_trap::~allocation_trap() {
    armed = false;
}

std::size_t allocation_trap::allocations() {
    return counted;
}

std::ptrdiff_t allocation_trap::blocks_kept() {
    return kept;
}

allocation_failure::allocation_failure(std::size_t nth) {
    failed = false;
    until_failure = nth;
}

allocation_failure::~allocation_failure() {
    until_failure = 0;
}

bool allocation_failure::happened() {
    return failed;
}

} // namespace orvanta_tests
