// Removal of many elements from an owning array in one pass.
#pragma once

#include <cstdint>

namespace mnd {

// Deletes the elements for which is_dropped(element) holds, in order, and closes the gaps; the
// order of the others stays. The array owns its elements.
// Cost: O(count), whatever the number dropped
template <class Array, class Dropped>
void drop_elements(Array& list, Dropped is_dropped) {
    std::int64_t kept = 0;
    for (std::int64_t i = 0; i < list.count; ++i) {
        auto* element = list.data[i];
        list.data[i] = nullptr;
        if (is_dropped(*element)) {
            delete element;
        } else {
            list.data[kept++] = element;
        }
    }
    list.count = kept;
}

}  // namespace mnd
