// One object a thread, kept by the system: it is destroyed with its thread, also where the program started
// that.
#pragma once

#include "vantu/orvanta/common/assume.hpp"

#include <memory>
#include <new>
#include <windows.h>

namespace vantu::orvanta::platform {

// Null when there is no memory for it.
template <typename T> const T* of_this_thread() noexcept {
    static const DWORD index = FlsAlloc([](void* object) { delete static_cast<T*>(object); });
    assume(index != FLS_OUT_OF_INDEXES);
    if (const auto* object = static_cast<const T*>(FlsGetValue(index)); object != nullptr) {
        return object;
    }
    std::unique_ptr<T> made(new (std::nothrow) T);
    return made != nullptr && FlsSetValue(index, made.get()) != 0 ? made.release() : nullptr;
}

} // namespace vantu::orvanta::platform
