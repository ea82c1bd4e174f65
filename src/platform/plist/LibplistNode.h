#pragma once

#include <plist/plist.h>

#include <cstdlib>
#include <memory>

namespace stowhaven::libplist {

struct NodeDeleter {
    void operator()(plist_t node) const { plist_free(node); }
};
// A libplist tree owned here and freed with it.
using Node = std::unique_ptr<void, NodeDeleter>;

struct MallocDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
// Memory that libplist hands over to be freed with free(): keys, iterators, output bytes.
template <typename T>
using Malloced = std::unique_ptr<T, MallocDeleter>;

}  // namespace stowhaven::libplist
