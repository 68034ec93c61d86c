// One object a thread, by the system's own means: it is destroyed with its thread whoever started that.
#pragma once

#include "vantu/orvanta/common/assume.hpp"

#include <windows.h>

namespace vantu::orvanta::platform {

template <typename T> const T& of_this_thread() {
    static const DWORD index = FlsAlloc([](void* object) { delete static_cast<T*>(object); });
    assume(index != FLS_OUT_OF_INDEXES);
    auto* object = static_cast<T*>(FlsGetValue(index));
    if (object == nullptr) {
        object = new T;
        FlsSetValue(index, object);
    }
    return *object;
}

} // namespace vantu::orvanta::platform
