#pragma once

#include <unistd.h>

namespace drench {

/// A file, folder or socket that is closed at the end of its scope. A negative `number` stands for
/// none.
struct Descriptor {
    int number;

    explicit Descriptor(int opened) : number(opened) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number >= 0)
            close(number);
    }
};

} // namespace drench
