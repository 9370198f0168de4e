#include "foundation/arrays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using mnd::kNotFoundIndex;
using mnd::my_string;
using mnd::MY_TArrayAsVector;
using mnd::MY_TIArrayAsVector;
using mnd::MY_TISArrayAsVector;

// An element that counts how many of it are alive, with a key and a mark of its arrival.
struct Element {
    static inline int alive = 0;
    int key = 0;
    int mark = 0;
    explicit Element(int k = 0, int m = 0) : key(k), mark(m) { ++alive; }
    Element(const Element& other) : key(other.key), mark(other.mark) { ++alive; }
    Element& operator=(const Element& other) = default;
    ~Element() { --alive; }
};

// Descending by key.
bool sorts_before(const Element& a, const Element& b) {
    return a.key > b.key;
}

// A class with virtual functions, copied by clone().
struct Shape {
    virtual ~Shape() = default;
    virtual Shape* clone() const = 0;
    virtual int sides() const = 0;
};
struct Square : Shape {
    Shape* clone() const override { return new Square(*this); }
    int sides() const override { return 4; }
};

class Arrays : public ::testing::Test {
protected:
    void SetUp() override { Element::alive = 0; }
    void TearDown() override { EXPECT_EQ(Element::alive, 0) << "leaked or deleted twice"; }
};

template <class Array>
std::vector<int> keys_of(const Array& array) {
    std::vector<int> keys;
    for (const Element* e : array)
        keys.push_back(e->key);
    return keys;
}

// ---- values

TEST_F(Arrays, ValueArrayHasOneSlotMoreThanItsUpperBound) {
    const MY_TArrayAsVector<double> standard;
    EXPECT_EQ(standard.capacity, 11);
    EXPECT_EQ(standard.delta, 10);
    EXPECT_EQ(standard.count, 0);
    EXPECT_EQ(standard.initial_size, 11);
    EXPECT_EQ(standard.lower_bound, 0);
    const MY_TArrayAsVector<long> series(0, 1000);
    EXPECT_EQ(series.capacity, 1);
    EXPECT_EQ(series.delta, 1000);
}

TEST_F(Arrays, ValueArrayGrowsByItsDelta) {
    MY_TArrayAsVector<int> a(1, 10);
    std::vector<std::int64_t> capacities;
    for (int i = 0; i < 23; ++i) {
        a.Add(i);
        capacities.push_back(a.capacity);
    }
    EXPECT_EQ(capacities[1], 2);
    EXPECT_EQ(capacities[2], 12);
    EXPECT_EQ(capacities[12], 22);
    EXPECT_EQ(capacities[22], 32);
    EXPECT_EQ(a.count, 23);
    for (int i = 0; i < 23; ++i)
        EXPECT_EQ(a[i], i);
}

TEST_F(Arrays, ValueArrayWithoutAStepStillGrows) {
    MY_TArrayAsVector<int> a(0, 0);
    for (int i = 0; i < 5; ++i)
        a.Add(i);
    EXPECT_EQ(a.count, 5);
    EXPECT_EQ(a[4], 4);
}

TEST_F(Arrays, ValueArrayAddsAnElementOfItsOwn) {
    MY_TArrayAsVector<my_string> a(0, 1);
    a.Add("first");
    for (int i = 0; i < 8; ++i)
        a.Add(a[0]);
    for (const my_string& s : a)
        EXPECT_EQ(s, "first");
    EXPECT_EQ(a.count, 9);
}

TEST_F(Arrays, ValueArrayIndexDoesNotTouchTheCount) {
    MY_TArrayAsVector<int> a(5, 5);
    a[5] = 7;
    EXPECT_EQ(a.count, 0);
    EXPECT_EQ(a[5], 7);
}

TEST_F(Arrays, ValueArrayHoldsFlags) {
    MY_TArrayAsVector<bool> a(0, 1);
    for (int i = 0; i < 4; ++i)
        a.Add(i % 2 == 0);
    bool& second = a[1];
    second = true;
    EXPECT_TRUE(a[0] && a[1] && a[2] && !a[3]);
}

TEST_F(Arrays, ReallocateOfValuesStartsAfreshWithoutAnExtraSlot) {
    MY_TArrayAsVector<int> a;
    a.Add(3);
    a.Reallocate(4);
    EXPECT_EQ(a.capacity, 4);
    EXPECT_EQ(a.count, 0);
    EXPECT_EQ(a[0], 0);
    EXPECT_EQ(a[3], 0);
    a.Reallocate(0);
    a.Add(5);
    EXPECT_EQ(a[0], 5);
}

TEST_F(Arrays, ResizeKeepsElementsAndCount) {
    MY_TArrayAsVector<int> a(2, 5);
    a.Add(1);
    a.Add(2);
    a[2] = 3;  // beyond the count, and kept too
    a.Resize(6);
    EXPECT_EQ(a.capacity, 6);
    EXPECT_EQ(a.count, 2);
    EXPECT_EQ(a[0], 1);
    EXPECT_EQ(a[1], 2);
    EXPECT_EQ(a[2], 3);
    EXPECT_EQ(a[5], 0);
}

TEST_F(Arrays, ResizeToFewerElementsKeepsTheFirst) {
    MY_TArrayAsVector<int> a(2, 5);
    for (int i = 1; i <= 3; ++i)
        a.Add(i);
    a.Resize(2);
    EXPECT_EQ(a.capacity, 2);
    EXPECT_EQ(a.count, 2);
    EXPECT_EQ(a[1], 2);
}

TEST_F(Arrays, ValueArraysCopyAllSlots) {
    MY_TArrayAsVector<my_string> a(3, 5);
    a.Add("x");
    a[3] = "behind";
    const MY_TArrayAsVector<my_string> b(a);
    EXPECT_EQ(b.count, 1);
    EXPECT_EQ(b.capacity, 4);
    EXPECT_EQ(b[3], "behind");
    MY_TArrayAsVector<my_string> c(0, 7);
    c = a;
    EXPECT_EQ(c.delta, 5);
    EXPECT_EQ(c.initial_size, 1);
    EXPECT_EQ(c[0], "x");
    a[0] = "y";
    EXPECT_EQ(b[0], "x");
    const MY_TArrayAsVector<my_string>& same = c;
    c = same;
    EXPECT_EQ(c[0], "x");
    MY_TArrayAsVector<my_string> moved(std::move(a));
    EXPECT_EQ(moved[0], "y");
    a.Add("anew");  // NOLINT: a moved-from array may be filled again
    EXPECT_EQ(a[0], "anew");
}

// ---- pointers

TEST_F(Arrays, PointerArrayHasExactlyTheSlotsAskedFor) {
    const MY_TIArrayAsVector<Element> standard;
    EXPECT_EQ(standard.capacity, 10);
    EXPECT_EQ(standard.delta, 100);
    EXPECT_EQ(standard.owns_elements, 1);
    EXPECT_EQ(standard.dummy, nullptr);
    const MY_TISArrayAsVector<Element> sorted(16, 50);
    EXPECT_EQ(sorted.capacity, 16);
    EXPECT_EQ(sorted.initial_size, 16);
    EXPECT_EQ(sorted.delta, 50);
}

TEST_F(Arrays, PointerArrayGrowsByItsDelta) {
    MY_TIArrayAsVector<Element> a(2, 3);
    for (int i = 0; i < 6; ++i)
        a.Add(new Element(i));
    EXPECT_EQ(a.capacity, 8);
    EXPECT_EQ(a.count, 6);
    EXPECT_EQ(keys_of(a), (std::vector<int>{0, 1, 2, 3, 4, 5}));
}

TEST_F(Arrays, PointerArrayOfNoSlotsAndNoStepStillGrows) {
    MY_TIArrayAsVector<Element> a(0, 0);
    for (int i = 0; i < 4; ++i)
        a.Add(new Element(i));
    EXPECT_EQ(a.count, 4);
}

TEST_F(Arrays, WritableIndexBehindTheCountRaisesIt) {
    MY_TIArrayAsVector<Element> a;
    a.Add(new Element(1));
    EXPECT_EQ(std::as_const(a)[1], nullptr);
    EXPECT_EQ(a.count, 1);
    EXPECT_EQ(a[1], nullptr);
    EXPECT_EQ(a.count, 2);
    a[4] = new Element(5);
    EXPECT_EQ(a.count, 5);
    EXPECT_EQ(a.at_const(4)->key, 5);
    EXPECT_EQ(a.at_const(3), nullptr);
}

TEST_F(Arrays, WriteFarPastTheEndIsLost) {
    MY_TIArrayAsVector<Element> a(2, 2);
    const auto lost = std::make_unique<Element>(3);
    a[2] = lost.get();
    EXPECT_EQ(a.count, 0);
    EXPECT_EQ(a[2], nullptr) << "a lost write must not answer later reads";
    EXPECT_EQ(a[-1], nullptr);
    EXPECT_EQ(a[kNotFoundIndex], nullptr);
    EXPECT_EQ(a.count, 0);
}

TEST_F(Arrays, ConstIndexOutOfRangeIsNull) {
    MY_TIArrayAsVector<Element> filled;
    filled.Add(new Element(1));
    const auto& a = filled;
    EXPECT_EQ(a[0]->key, 1);
    EXPECT_EQ(a[1], nullptr);
    EXPECT_EQ(a[-1], nullptr);
    EXPECT_EQ(a.at_const(kNotFoundIndex), nullptr);
}

TEST_F(Arrays, FlushOfAPlainPointerArrayKeepsTheCapacity) {
    MY_TIArrayAsVector<Element> a(2, 3);
    for (int i = 0; i < 4; ++i)
        a.Add(new Element(i));
    a.Flush();
    EXPECT_EQ(Element::alive, 0);
    EXPECT_EQ(a.count, 0);
    EXPECT_EQ(a.capacity, 5);
    EXPECT_EQ(a[0], nullptr);
    a.Flush();  // with one null slot
    EXPECT_EQ(a.count, 0);
}

TEST_F(Arrays, FlushOfASortedPointerArrayReturnsToTheInitialSize) {
    MY_TISArrayAsVector<Element> a(2, 3);
    for (int i = 0; i < 4; ++i)
        a.Add(new Element(i));
    EXPECT_EQ(a.capacity, 5);
    a.Flush();
    EXPECT_EQ(Element::alive, 0);
    EXPECT_EQ(a.count, 0);
    EXPECT_EQ(a.capacity, 2);
}

TEST_F(Arrays, NonOwningArrayLeavesItsElementsAlone) {
    Element one(1), two(2);
    {
        MY_TIArrayAsVector<Element> a;
        a.owns_elements = 0;
        a.Add(&one);
        a.Add(&two);
        EXPECT_TRUE(a.Detach(0));
        EXPECT_EQ(keys_of(a), (std::vector<int>{2}));
        a.Flush();
        a.Add(&one);
    }
    EXPECT_EQ(Element::alive, 2);
}

TEST_F(Arrays, DestroyAlwaysDeletes) {
    MY_TIArrayAsVector<Element> a;
    a.owns_elements = 0;
    for (int i = 0; i < 3; ++i)
        a.Add(new Element(i));
    EXPECT_TRUE(a.Destroy(1));
    EXPECT_EQ(Element::alive, 2);
    EXPECT_EQ(keys_of(a), (std::vector<int>{0, 2}));
    EXPECT_EQ(a[2], nullptr);
    a.owns_elements = 1;
}

TEST_F(Arrays, DetachDeletesWhatIsOwned) {
    MY_TIArrayAsVector<Element> a;
    for (int i = 0; i < 3; ++i)
        a.Add(new Element(i));
    EXPECT_TRUE(a.Detach(0));
    EXPECT_EQ(Element::alive, 2);
    EXPECT_EQ(keys_of(a), (std::vector<int>{1, 2}));
}

TEST_F(Arrays, DestroyOfAFailedLookupChangesNothing) {
    MY_TIArrayAsVector<Element> a;
    a.Add(new Element(1));
    EXPECT_FALSE(a.Destroy(2147483647));
    EXPECT_FALSE(a.Detach(2147483647));
    EXPECT_FALSE(a.Destroy(1));
    EXPECT_FALSE(a.Detach(-1));
    EXPECT_EQ(a.count, 1);
    EXPECT_EQ(Element::alive, 1);
}

TEST_F(Arrays, ReallocateOfPointersDeletesNoElement) {
    Element one(1);
    MY_TIArrayAsVector<Element> a;
    a.Add(&one);
    a.Reallocate(4);
    EXPECT_EQ(Element::alive, 1);
    EXPECT_EQ(a.capacity, 5);
    EXPECT_EQ(a.count, 0);
    EXPECT_EQ(a[4], nullptr);
}

TEST_F(Arrays, AssignmentToAnOwningArrayClones) {
    MY_TIArrayAsVector<Element> a(2, 3), b(7, 9);
    for (int i = 0; i < 3; ++i)
        a.Add(new Element(i));
    b.Add(new Element(8));
    b = a;
    EXPECT_EQ(Element::alive, 6);
    EXPECT_EQ(keys_of(b), keys_of(a));
    EXPECT_NE(b[0], a[0]);
    EXPECT_EQ(b.capacity, 5);
    EXPECT_EQ(b.delta, 3);
    EXPECT_EQ(b.initial_size, 7);
    const auto& same = b;
    b = same;
    EXPECT_EQ(keys_of(b), keys_of(a));
}

TEST_F(Arrays, AssignmentToANonOwningArrayCopiesThePointers) {
    MY_TIArrayAsVector<Element> a, b;
    a.Add(new Element(1));
    b.owns_elements = 0;
    b = a;
    EXPECT_EQ(b[0], a[0]);
    EXPECT_EQ(b.owns_elements, 0);
    EXPECT_EQ(Element::alive, 1);
}

TEST_F(Arrays, CopyTakesOverTheOwnership) {
    MY_TISArrayAsVector<Element> owner;
    owner.Add(new Element(1));
    const MY_TISArrayAsVector<Element> clone(owner);
    EXPECT_EQ(Element::alive, 2);
    MY_TIArrayAsVector<Element> viewer;
    viewer.owns_elements = 0;
    viewer.Add(owner[0]);
    const MY_TIArrayAsVector<Element> second_viewer(viewer);
    EXPECT_EQ(second_viewer[0], owner[0]);
    EXPECT_EQ(Element::alive, 2);
}

TEST_F(Arrays, MoveLeavesAnEmptyArray) {
    MY_TIArrayAsVector<Element> a;
    a.Add(new Element(1));
    const MY_TIArrayAsVector<Element> b(std::move(a));
    EXPECT_EQ(keys_of(b), (std::vector<int>{1}));
    EXPECT_EQ(a.count, 0);  // NOLINT: the state after the move is what is tested
    a.Add(new Element(2));
    EXPECT_EQ(keys_of(a), (std::vector<int>{2}));
}

TEST_F(Arrays, ClassesWithVirtualFunctionsAreCopiedByClone) {
    MY_TIArrayAsVector<Shape> a;
    a.Add(new Square);
    a.Add(nullptr);
    const MY_TIArrayAsVector<Shape> b(a);
    EXPECT_NE(b[0], a[0]);
    EXPECT_EQ(b[0]->sides(), 4);
    EXPECT_EQ(b[1], nullptr);
}

// ---- sorted insertion

TEST_F(Arrays, SortedArrayKeepsEqualsInOrderOfArrival) {
    MY_TISArrayAsVector<Element> a(1, 2);
    const int keys[] = {3, 5, 3, 9, 5, 3};
    std::vector<long> places;
    for (int i = 0; i < 6; ++i)
        places.push_back(a.Add(new Element(keys[i], i)));
    EXPECT_EQ(keys_of(a), (std::vector<int>{9, 5, 5, 3, 3, 3}));
    std::vector<int> marks;
    for (const Element* e : a)
        marks.push_back(e->mark);
    EXPECT_EQ(marks, (std::vector<int>{3, 1, 4, 0, 2, 5}));
    EXPECT_EQ(places, (std::vector<long>{0, 0, 2, 0, 2, 5}));
}

TEST_F(Arrays, NewElementStopsAtTheFirstPredecessorItDoesNotPrecede) {
    MY_TISArrayAsVector<Element> a;
    for (const int key : {9, 7, 5})
        a.Add(new Element(key));
    a[0]->key = 1;  // keys may change behind the array's back
    EXPECT_EQ(a.Add(new Element(6)), 2);
    EXPECT_EQ(keys_of(a), (std::vector<int>{1, 7, 6, 5}));
}

// ---- heap sort

TEST(HeapSort, SortsTheOneBasedRangeOnly) {
    int a[] = {99, 5, 3, 8, 1, 0};
    mnd::heapsort(4, a);
    EXPECT_EQ(std::vector<int>(a, a + 6), (std::vector<int>{99, 1, 3, 5, 8, 0}));
    mnd::heapsort(1, a);
    mnd::heapsort(0, a);
    mnd::heapsort(-1, a);
    EXPECT_EQ(a[0], 99);
}

// The heap of {2a, 2b, 1}: nothing sinks on the building pass (L = 1: 2a is not below 2b).
// Then 1 is taken, 2a goes to the end, 1 sinks below 2b; then 1 is taken, 2b goes to the
// second place, and 1 ends in front: 1, 2b, 2a.
TEST(HeapSort, EqualKeysEndInTheOrderOfThisAlgorithm) {
    struct Keyed {
        int key;
        char name;
    };
    Keyed a[] = {{0, '-'}, {2, 'a'}, {2, 'b'}, {1, 'c'}};
    mnd::heapsort_by(3, a, [](const Keyed& x, const Keyed& y) { return x.key < y.key; });
    EXPECT_EQ(std::string({a[1].name, a[2].name, a[3].name}), "cba");
}

// {1a, 2b, 2c}: 1a sinks to the place of the first of its equal children: 2b, 1a, 2c. Then 2c
// is taken, 2b goes to the end and 2c stays in front; then 1a is taken, 2c goes to the second
// place, and 1a ends in front: 1a, 2c, 2b.
TEST(HeapSort, FirstOfEqualChildrenRises) {
    struct Keyed {
        int key;
        char name;
    };
    Keyed a[] = {{0, '-'}, {1, 'a'}, {2, 'b'}, {2, 'c'}};
    mnd::heapsort_by(3, a, [](const Keyed& x, const Keyed& y) { return x.key < y.key; });
    EXPECT_EQ(std::string({a[1].name, a[2].name, a[3].name}), "acb");
}

TEST(HeapSort, AgreesWithStableOrderOnDistinctKeys) {
    std::mt19937 random(7);
    for (int n = 0; n <= 40; ++n) {
        std::vector<double> values;
        for (int i = 0; i <= n; ++i)
            values.push_back(i * 1.5);
        std::shuffle(values.begin() + 1, values.end(), random);
        std::vector<double> expected = values;
        std::sort(expected.begin() + 1, expected.end());
        mnd::heapsort(n, values.data());
        EXPECT_EQ(values, expected);
    }
}

TEST(HeapSort, TakesNotANumberWithoutLeavingTheArray) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<double> values = {nan, 2.0, nan, 1.0, nan, 0.0};
    mnd::guarded_heapsort(static_cast<std::int64_t>(values.size()), values.data());
    EXPECT_EQ(std::count(values.begin(), values.end(), 1.0), 1);
}

TEST(HeapSort, SortsPointersByWhatTheyPointTo) {
    Element a(1), b(3), c(2);
    Element* order[] = {&a, &b, &c};
    mnd::guarded_heapsort(3, order);
    EXPECT_EQ(order[0], &b);
    EXPECT_EQ(order[1], &c);
    EXPECT_EQ(order[2], &a);
}

TEST(HeapSort, FirstOfTheExtremeElementsGoesToTheFront) {
    Element elements[] = {Element(1, 0), Element(7, 1), Element(7, 2)};
    mnd::extreme_to_front(3, elements);
    EXPECT_EQ(elements[0].mark, 1);
    EXPECT_EQ(elements[1].mark, 0);
    Element* pointers[] = {&elements[1], &elements[2], &elements[0]};  // keys 1, 7, 7
    Element* const first = pointers[2];
    mnd::extreme_to_front(3, pointers);
    EXPECT_EQ(pointers[0], &elements[2]);
    EXPECT_EQ(pointers[2], first);
}

TEST(HeapSort, QuickSortArrayOfSmallArrays) {
    const auto sorted = [](std::vector<double> values) {
        MY_TArrayAsVector<double> a(0, 10);
        for (const double v : values)
            a.Add(v);
        a.quickSortArray();
        return std::vector<double>(a.begin(), a.end());
    };
    EXPECT_EQ(sorted({}), (std::vector<double>{}));
    EXPECT_EQ(sorted({4}), (std::vector<double>{4}));
    EXPECT_EQ(sorted({4, 2}), (std::vector<double>{2, 4}));
    EXPECT_EQ(sorted({3, 1, 2}), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(sorted({5, 1, 4, 1, 5, 9, 2, 6}), (std::vector<double>{1, 1, 2, 4, 5, 5, 6, 9}));
}

}  // namespace
