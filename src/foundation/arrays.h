// The three growing arrays of the system: values, pointers, and pointers kept sorted.
//
// All grow by a fixed step and are forgiving at bad indices: a pointer array answers an
// index past its end with a harmless dummy. The order of sorting of an element type is told
// by one function beside that type, found by argument-dependent lookup:
//
//   bool sorts_before(const T& a, const T& b);   // a strictly before b
//
// Elements are iterated by index up to `count`, or by range-for.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

#include "foundation/my_string.h"

namespace mnd {

// Order of plain numbers: ascending.
template <class T>
requires std::is_arithmetic_v<T>
constexpr bool sorts_before(const T& a, const T& b) {
    return a < b;
}

// Heap sort by sifting down, in place, of the 1-based arr[1] to arr[n]; arr[0] is not
// touched. Not stable: the order that equal keys end in is this algorithm's own and is seen
// in results, so it must not be exchanged for another sort. n below 2 does nothing.
//   before   before(a, b) is true when a stands strictly before b
// Source:   Williams 1964, CACM 7:347-348 (algorithm 232)
template <class E, class Before>
void heapsort_by(int n, E* arr, Before before) {
    if (n < 2) return;
    int left = n / 2 + 1;
    int right = n;
    for (;;) {
        E taken{};
        if (left > 1) {
            taken = std::move(arr[--left]);
        } else {
            taken = std::move(arr[right]);
            arr[right] = std::move(arr[1]);
            if (--right == 1) {
                arr[1] = std::move(taken);
                return;
            }
        }
        int hole = left;
        int child = 2 * left;
        while (child <= right) {
            if (child < right && before(arr[child], arr[child + 1])) ++child;
            if (!before(taken, arr[child])) break;
            arr[hole] = std::move(arr[child]);
            hole = child;
            child *= 2;
        }
        arr[hole] = std::move(taken);
    }
}

// heapsort_by in the order of sorts_before; the second form sorts by what is pointed to.
template <class T>
void heapsort(int n, T* arr) {
    heapsort_by(n, arr, [](const T& a, const T& b) { return sorts_before(a, b); });
}
template <class T>
void heapsort(int n, T** arr) {
    heapsort_by(n, arr, [](const T* a, const T* b) { return sorts_before(*a, *b); });
}

// First stage of a whole sort: swaps the first of the extreme elements of arr[0..count-1]
// into index 0. The rest is then sorted by heapsort(count - 1, arr).
template <class T>
void extreme_to_front(std::int64_t count, T* arr) {
    std::int64_t best = 0;
    for (std::int64_t i = 1; i < count; ++i) {
        if (sorts_before(arr[i], arr[best])) best = i;
    }
    if (best > 0) std::swap(arr[0], arr[best]);
}
template <class T>
void extreme_to_front(std::int64_t count, T** arr) {
    std::int64_t best = 0;
    for (std::int64_t i = 1; i < count; ++i) {
        if (sorts_before(*arr[i], *arr[best])) best = i;
    }
    if (best > 0) std::swap(arr[0], arr[best]);
}

// Both stages: sorts arr[0..count-1], of values or of pointers (none of them null).
template <class T>
void guarded_heapsort(std::int64_t count, T* arr) {
    extreme_to_front(count, arr);
    heapsort(static_cast<int>(count - 1), arr);
}

// Array of values. T needs a default constructor and assignment.
template <class T>
class MY_TArrayAsVector {
public:
    std::unique_ptr<T[]> data;      // owned: at least `capacity` constructed elements
    std::int64_t capacity = 0;      // recorded size
    std::int64_t initial_size = 0;  // capacity at construction
    std::int64_t count = 0;         // elements added
    std::int64_t lower_bound = 0;   // always 0
    std::int64_t delta = 0;         // growth step

    MY_TArrayAsVector() : MY_TArrayAsVector(10, 10) {}
    // Room for the indices 0 to upper, that is upper + 1 elements.
    MY_TArrayAsVector(const long& upper, const long& growth);
    // A copy holds all `capacity` elements, those behind `count` included.
    MY_TArrayAsVector(const MY_TArrayAsVector& other);
    MY_TArrayAsVector(MY_TArrayAsVector&& other) noexcept;
    MY_TArrayAsVector& operator=(const MY_TArrayAsVector& other);  // leaves initial_size
    ~MY_TArrayAsVector() = default;

    // Stores at index `count`, growing by delta when the array is full.
    void Add(const T& element);
    // Forgets the elements (they are not destroyed); the capacity stays.
    void Flush() { count = lower_bound = 0; }
    // Gives up all elements for n default ones; capacity n, count 0.
    void Reallocate(const int& n);
    // Moves the first min(n, capacity) elements into a storage of n; count stays, but is
    // never left above n.
    void Resize(const long& n);
    // Heap sort of the `count` elements in the order of sorts_before, in two stages: the
    // first of the extreme elements goes to index 0, the rest is sorted behind it.
    void quickSortArray() { guarded_heapsort(count, data.get()); }

    // Unchecked, below `capacity`; does not touch `count`.
    T& operator[](std::int64_t i) { return data[i]; }
    const T& operator[](std::int64_t i) const { return data[i]; }

    T* begin() { return data.get(); }
    T* end() { return data.get() + count; }
    const T* begin() const { return data.get(); }
    const T* end() const { return data.get() + count; }

private:
    std::int64_t allocated_ = 0;  // elements behind `data`; grows ahead of `capacity`

    void move_to_storage(std::int64_t size, std::int64_t kept);
};

// What the two pointer arrays share: storage, growth, access, copying.
//
// With owns_elements (the default) the array deletes its elements; the choice is made per
// object. Copies of an owning array clone the elements, by `T* clone() const` where T has
// it (a class with virtual functions needs it), else by T's copy constructor; a non-owning
// array copies the pointers.
template <class T>
class PointerArray {
public:
    std::unique_ptr<T*[]> data;      // owned: the slots; elements owned when owns_elements
    std::int64_t capacity = 0;       // recorded number of slots
    std::int64_t count = 0;          // elements added
    std::int64_t initial_size = 0;   // capacity at construction
    std::int64_t lower_bound = 0;    // always 0
    std::int64_t delta = 0;          // growth step
    T* dummy = nullptr;              // not owned: stands in for an index out of range, always null
    std::int64_t owns_elements = 1;  // 1: the array deletes its elements

    // The slot when i < count. When i < capacity `count` is RAISED to i + 1 and the (null)
    // slot returned. Else the dummy: what is written there is lost.
    // To read, use at_const(), a const array, or range-for.
    T*& operator[](std::int64_t i);
    // The slot when 0 <= i < count, else null. Never changes the array.
    T* const& operator[](std::int64_t i) const { return in_use(i) ? data[i] : null_element_; }
    T* at_const(std::int64_t i) const { return in_use(i) ? data[i] : nullptr; }

    T* const* begin() const { return data.get(); }
    T* const* end() const { return data.get() + count; }

protected:
    explicit PointerArray(std::int64_t size, std::int64_t growth);
    PointerArray(const PointerArray& other);
    PointerArray(PointerArray&& other) noexcept;
    // Empties this array, takes the source's capacity, lower_bound, delta and elements;
    // owns_elements and initial_size of this array stay.
    PointerArray& operator=(const PointerArray& other);
    ~PointerArray() { delete_elements(); }

    void append(T* element);
    void delete_elements();
    void new_storage(std::int64_t size);

private:
    static constexpr T* null_element_ = nullptr;
    std::int64_t allocated_ = 0;  // slots behind `data`; grows ahead of `capacity`

    bool in_use(std::int64_t i) const { return i >= 0 && i < count; }
    void take_elements_of(const PointerArray& other);
    static T* clone_of(const T* element);
};

// Array of pointers in order of arrival.
template <class T>
class MY_TIArrayAsVector : public PointerArray<T> {
public:
    // Room for exactly `size` pointers.
    explicit MY_TIArrayAsVector(const long& size = 10, const long& growth = 100)
        : PointerArray<T>(size, growth) {}

    // Stores at index `count`; an owning array owns the element from here on.
    void Add(T* element) { this->append(element); }
    // Deletes the elements if owned and nulls the slots; the capacity stays.
    void Flush();
    // Deletes element i ALWAYS, owned or not, and closes the gap. False, with nothing
    // changed, for kNotFoundIndex and any other index out of range.
    bool Destroy(const int& i) { return remove_at(i, true); }
    // The same, but deletes the element only when the array owns its elements.
    bool Detach(const int& i) { return remove_at(i, this->owns_elements != 0); }
    // Gives up the slots WITHOUT deleting any element, for n + 1 fresh ones; count 0.
    void Reallocate(const int& n);

private:
    bool remove_at(std::int64_t i, bool delete_it);
};

// Array of pointers kept in the order of sorts_before(const T&, const T&).
template <class T>
class MY_TISArrayAsVector : public PointerArray<T> {
public:
    // Room for exactly `size` pointers.
    explicit MY_TISArrayAsVector(const long& size = 10, const long& growth = 100)
        : PointerArray<T>(size, growth) {}

    // Appends, then moves the new element towards the front while it sorts strictly before
    // its predecessor: equals stay in order of arrival. Returns the index where it ends.
    long Add(T* element);
    // Deletes the elements if owned, then starts afresh with initial_size slots.
    void Flush();
};

// ---- MY_TArrayAsVector

template <class T>
MY_TArrayAsVector<T>::MY_TArrayAsVector(const long& upper, const long& growth)
    : capacity(std::max<std::int64_t>(upper + 1, 0)), initial_size(capacity), delta(growth) {
    data = std::make_unique<T[]>(static_cast<std::size_t>(capacity));
    allocated_ = capacity;
}

template <class T>
MY_TArrayAsVector<T>::MY_TArrayAsVector(const MY_TArrayAsVector& other) : initial_size(other.initial_size) {
    *this = other;
}

template <class T>
MY_TArrayAsVector<T>::MY_TArrayAsVector(MY_TArrayAsVector&& other) noexcept
    : data(std::move(other.data)),
      capacity(std::exchange(other.capacity, 0)),
      initial_size(other.initial_size),
      count(std::exchange(other.count, 0)),
      lower_bound(other.lower_bound),
      delta(other.delta),
      allocated_(std::exchange(other.allocated_, 0)) {}

template <class T>
MY_TArrayAsVector<T>& MY_TArrayAsVector<T>::operator=(const MY_TArrayAsVector& other) {
    if (this == &other) return *this;
    auto copy = std::make_unique<T[]>(static_cast<std::size_t>(other.capacity));
    std::copy_n(other.data.get(), other.capacity, copy.get());
    data = std::move(copy);
    capacity = allocated_ = other.capacity;
    count = other.count;
    lower_bound = other.lower_bound;
    delta = other.delta;
    return *this;
}

template <class T>
void MY_TArrayAsVector<T>::Add(const T& element) {
    if (count < capacity) {
        data[count++] = element;
        return;
    }
    T kept = element;  // it may be one of our own elements
    capacity += std::max<std::int64_t>(delta, 1);
    // The recorded capacity grows by delta; the storage runs ahead of it, so that long
    // series are not copied once per step.
    if (capacity > allocated_) move_to_storage(std::max(capacity, allocated_ + allocated_ / 2), count);
    data[count++] = std::move(kept);
}

template <class T>
void MY_TArrayAsVector<T>::Reallocate(const int& n) {
    const std::int64_t size = std::max(n, 0);
    data.reset();
    data = std::make_unique<T[]>(static_cast<std::size_t>(size));
    capacity = allocated_ = size;
    count = lower_bound = 0;
}

template <class T>
void MY_TArrayAsVector<T>::Resize(const long& n) {
    const std::int64_t size = std::max<std::int64_t>(n, 0);
    move_to_storage(size, std::min(size, capacity));
    capacity = size;
    count = std::min(count, size);
}

template <class T>
void MY_TArrayAsVector<T>::move_to_storage(std::int64_t size, std::int64_t kept) {
    auto storage = std::make_unique<T[]>(static_cast<std::size_t>(size));
    std::move(data.get(), data.get() + kept, storage.get());
    data = std::move(storage);
    allocated_ = size;
}

// ---- PointerArray

template <class T>
PointerArray<T>::PointerArray(std::int64_t size, std::int64_t growth)
    : initial_size(std::max<std::int64_t>(size, 0)), delta(growth) {
    new_storage(initial_size);
}

// Delegates, so that the destructor frees what was cloned should a later clone throw.
template <class T>
PointerArray<T>::PointerArray(const PointerArray& other) : PointerArray(0, other.delta) {
    initial_size = other.initial_size;
    owns_elements = other.owns_elements;
    take_elements_of(other);
}

template <class T>
PointerArray<T>::PointerArray(PointerArray&& other) noexcept
    : data(std::move(other.data)),
      capacity(std::exchange(other.capacity, 0)),
      count(std::exchange(other.count, 0)),
      initial_size(other.initial_size),
      lower_bound(other.lower_bound),
      delta(other.delta),
      owns_elements(other.owns_elements),
      allocated_(std::exchange(other.allocated_, 0)) {}

template <class T>
PointerArray<T>& PointerArray<T>::operator=(const PointerArray& other) {
    if (this == &other) return *this;
    delete_elements();
    take_elements_of(other);
    return *this;
}

template <class T>
T*& PointerArray<T>::operator[](std::int64_t i) {
    if (in_use(i)) return data[i];
    if (i >= 0 && i < capacity) {
        count = i + 1;
        return data[i];
    }
    dummy = nullptr;
    return dummy;
}

template <class T>
void PointerArray<T>::append(T* element) {
    if (count == capacity) {
        capacity += std::max<std::int64_t>(delta, 1);
        if (capacity > allocated_) {
            // The recorded capacity grows by delta; the storage runs ahead of it.
            const std::int64_t size = std::max(capacity, allocated_ + allocated_ / 2);
            auto storage = std::make_unique<T*[]>(static_cast<std::size_t>(size));
            std::copy_n(data.get(), count, storage.get());
            data = std::move(storage);
            allocated_ = size;
        }
    }
    data[count++] = element;
}

template <class T>
void PointerArray<T>::delete_elements() {
    for (std::int64_t i = 0; i < count; ++i) {
        if (owns_elements != 0) delete data[i];
        data[i] = nullptr;
    }
    count = lower_bound = 0;
}

template <class T>
void PointerArray<T>::new_storage(std::int64_t size) {
    data = std::make_unique<T*[]>(static_cast<std::size_t>(size));
    capacity = allocated_ = size;
    count = lower_bound = 0;
}

template <class T>
void PointerArray<T>::take_elements_of(const PointerArray& other) {
    new_storage(other.capacity);
    delta = other.delta;
    dummy = nullptr;
    for (std::int64_t i = 0; i < other.count; ++i) {
        // Counted one by one, so that nothing leaks should a clone throw.
        if (owns_elements != 0) {
            data[i] = other.data[i] == nullptr ? nullptr : clone_of(other.data[i]);
        } else {
            data[i] = other.data[i];
        }
        count = i + 1;
    }
}

template <class T>
T* PointerArray<T>::clone_of(const T* element) {
    if constexpr (requires { element->clone(); }) {
        return element->clone();
    } else {
        static_assert(std::is_copy_constructible_v<T>,
                      "an owning copy needs T::clone() or a copy constructor");
        return new T(*element);
    }
}

// ---- MY_TIArrayAsVector

template <class T>
void MY_TIArrayAsVector<T>::Flush() {
    this->delete_elements();
}

template <class T>
void MY_TIArrayAsVector<T>::Reallocate(const int& n) {
    this->new_storage(std::max<std::int64_t>(n, 0) + 1);
}

template <class T>
bool MY_TIArrayAsVector<T>::remove_at(std::int64_t i, bool delete_it) {
    if (i == kNotFoundIndex || i < 0 || i >= this->count) return false;
    if (delete_it) delete this->data[i];
    std::copy(this->data.get() + i + 1, this->data.get() + this->count, this->data.get() + i);
    this->data[--this->count] = nullptr;
    return true;
}

// ---- MY_TISArrayAsVector

template <class T>
long MY_TISArrayAsVector<T>::Add(T* element) {
    this->append(element);
    std::int64_t i = this->count - 1;
    while (i > 0 && sorts_before(*element, *this->data[i - 1])) {
        this->data[i] = this->data[i - 1];
        --i;
    }
    this->data[i] = element;
    return i;
}

template <class T>
void MY_TISArrayAsVector<T>::Flush() {
    this->delete_elements();
    this->new_storage(this->initial_size);
}

}  // namespace mnd
