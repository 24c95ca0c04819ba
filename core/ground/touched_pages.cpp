// SPDX-License-Identifier: MIT
// Touches pages and polls.
#include "ground/touched_pages.h"

#include "ground/memory.h"
#include "ground/message_poll.h"

static constexpr std::size_t PageBytes = 4096;  // of the smallest page of memory
static constexpr int TouchedPageUnits = 512;    // work of a page for PollMessages

void TouchPages(void* block, std::size_t bytes) {
    if (static_cast<double>(bytes) < UncheckedBytes) {
        return;
    }
    for (std::size_t i = 0; i < bytes; i += PageBytes) {
        static_cast<volatile char*>(block)[i] = 0;
        PollMessages(TouchedPageUnits);
    }
}
