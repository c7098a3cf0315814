// The parts of the kernel's event queues that BLE-kovra uses, declared for machines that are not Macs.
#pragma once

#include <stdint.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

struct kevent {
    uintptr_t ident;
    int16_t filter;
    uint16_t flags;
    uint32_t fflags;
    intptr_t data;
    void* udata;
};

#define EVFILT_PROC (-5)
#define EVFILT_USER (-10)
#define EV_ADD 0x0001
#define NOTE_EXIT 0x80000000U
#define NOTE_TRIGGER 0x01000000U

#define EV_SET(event, what, which, how, details, number, context) \
    do {                                                          \
        struct kevent* set = (event);                             \
        set->ident = (what);                                      \
        set->filter = (which);                                    \
        set->flags = (how);                                       \
        set->fflags = (details);                                  \
        set->data = (number);                                     \
        set->udata = (context);                                   \
    } while (0)

int kqueue(void);
int kevent(int queue, const struct kevent* changes, int change_count, struct kevent* events, int event_count,
           const struct timespec* timeout);

#ifdef __cplusplus
}
#endif
