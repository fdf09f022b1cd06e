#pragma once

#include <quendrix/RuntimeError.h>

// The number of the RuntimeError that `call` raises, or 0 when it raises none.
template <typename F>
int errorOf(F call) {
    try {
        call();
    } catch (const quendrix::RuntimeError& e) {
        return e.number();
    }
    return 0;
}
