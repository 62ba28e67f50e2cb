#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

// The generated XKB header has a struct member whose name is a C++ keyword.
#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit
#ifdef __clang__
#pragma clang diagnostic pop
#endif

namespace veltrin {

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
/// A reply or an event, freed with its owner.
template <typename T>
using X11Reply = std::unique_ptr<T, FreeDeleter>;

}  // namespace veltrin
