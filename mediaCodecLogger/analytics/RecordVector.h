// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>

#include <algorithm>

#include <utils/Vector.h>

namespace android::analytics {

/**
 * `Vector::editItemAt()` without its look at whether another vector shares the storage: those of a
 * tracker are never copied.
 */
template <typename T>
T& editRecord(Vector<T>& records, size_t index) {
    return const_cast<T*>(records.array())[index];
}

/**
 * Removes one record. `Vector::removeAt()` may move what remains to new memory; taking records off
 * the end does not while there are few, so a steady flow of frames allocates nothing.
 */
template <typename T>
void removeRecord(Vector<T>& records, size_t index) {
    T* array = &editRecord(records, 0);
    std::copy(array + index + 1, array + records.size(), array + index);
    records.pop();
}

}  // namespace android::analytics
