// The work of a polling thread after a poll that brought no event: the layer above gets things done there in
// time, also while the service is silent.
#pragma once

#include "vantu/orvanta/orvanta.h"

namespace vantu::orvanta {

// Run by the polling threads that were started with this user pointer, and by no others: their events go to
// the task's owner. It runs between two polls, with no lock held.
struct idle_task {
    void (*run)(void* user);
    void* user;
};

// Sets the context's task, which must stay in place while the context is polled by a thread; null for none.
void set_idle_task(vantu_orvanta_context& context, const idle_task* task);

} // namespace vantu::orvanta
