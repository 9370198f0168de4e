#include "model/compact_list.h"

#include <gtest/gtest.h>

#include <vector>

#include "foundation/arrays.h"

namespace {

// Says which elements still live.
struct Element {
    int number;
    std::vector<bool>* alive;
    Element(int n, std::vector<bool>* flags) : number(n), alive(flags) { (*alive)[index()] = true; }
    Element(const Element&) = default;
    ~Element() { (*alive)[index()] = false; }
    std::size_t index() const { return static_cast<std::size_t>(number); }
};

TEST(DropElements, DeletesThemAndKeepsTheOrderOfTheOthers) {
    std::vector<bool> alive(7);
    mnd::MY_TIArrayAsVector<Element> list;
    for (int i = 0; i < 7; ++i)
        list.Add(new Element(i, &alive));
    mnd::drop_elements(list, [](const Element& element) { return element.number % 3 == 0; });
    ASSERT_EQ(list.count, 4);
    std::vector<int> left;
    for (const Element* element : list)
        left.push_back(element->number);
    EXPECT_EQ(left, (std::vector<int>{1, 2, 4, 5}));
    EXPECT_EQ(alive, (std::vector<bool>{false, true, true, false, true, true, false}));
    EXPECT_EQ(list.data[4], nullptr);
    mnd::drop_elements(list, [](const Element&) { return true; });
    EXPECT_EQ(list.count, 0);
    mnd::drop_elements(list, [](const Element&) { return true; });
    EXPECT_EQ(list.count, 0);
}

}  // namespace
