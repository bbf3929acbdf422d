#include "klv/base/memory.h"
#include "klv/core/list.h"
#include "klv/core/ptr_list.h"
#include "klv/core/system.h"

#include <initializer_list>
#include <string>

#include <gtest/gtest.h>

using namespace klv;

namespace {

struct item : vOBJECT {
    explicit item(char its_name)
        : name(its_name)
    {
    }
    char name;
};

item a('a'), b('b'), c('c'), d('d');

char name_of(vOBJECT* object) { return object ? static_cast<item*>(object)->name : '-'; }

std::string forwards(const fLIST& list)
{
    std::string names;
    for (fLINK* link = list.Next(nullptr); link; link = list.Next(link))
        names += name_of(link->Object());
    return names;
}

std::string backwards(const fLIST& list)
{
    std::string names;
    for (fLINK* link = list.Prev(nullptr); link; link = list.Prev(link))
        names += name_of(link->Object());
    return names;
}

} // namespace

TEST(List, KeepsItsOrderBothWays)
{
    fLIST list;
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.First(), nullptr);
    list.Append(b), list.Append(c), list.Prepend(a);
    EXPECT_EQ(forwards(list), "abc");
    EXPECT_EQ(backwards(list), "cba");
    EXPECT_EQ(list.NoItems(), 3);
    EXPECT_TRUE(list.Search(b));
    EXPECT_FALSE(list.Search(d));
}

TEST(List, RemovesOneLinkLookingAtTheEndsFirst)
{
    const struct {
        std::initializer_list<item*> items;
        item* removed;
        const char* left;
    } cases[] = {
        {{&a, &b, &a, &c}, &a, "bac"},
        {{&b, &a, &c, &a}, &a, "bac"},
        {{&b, &a, &a, &c}, &a, "bac"},
        {{&a}, &a, ""},
        {{&a, &b}, &d, "ab"},
    };
    for (const auto& test : cases) {
        fLIST list;
        for (const item* i : test.items)
            list.Append(*i);
        EXPECT_EQ(list.Remove(*test.removed), test.removed == &d ? 0 : 1);
        EXPECT_EQ(forwards(list), test.left);
        std::string reversed(test.left);
        EXPECT_EQ(backwards(list), std::string(reversed.rbegin(), reversed.rend()));
    }
}

TEST(List, CopiesHaveLinksOfTheirOwn)
{
    fLIST list;
    list.Append(a), list.Append(b);
    fLIST copy(list);
    list.Remove(a);
    EXPECT_EQ(forwards(copy), "ab");
    copy.Append(c);
    EXPECT_EQ(forwards(list), "b");
    list = copy;
    copy = fLIST();
    EXPECT_EQ(forwards(list), "abc");
    list = *&list;
    EXPECT_EQ(forwards(list), "abc");
}

TEST(List, AnswersWhenALinkCannotBeHad)
{
    fLIST list;
    list.Append(a);
    vMemFailAfter(0, memory_failure::from_then_on);
    EXPECT_EQ(list.Append(b), 0);
    EXPECT_EQ(list.Prepend(b), 0);
    vMemNeverFail();
    EXPECT_EQ(forwards(list), "a");
    vSYSTEM::SetExceptionFlag(0);
}

TEST(List, HoldsAtMostASixteenBitCount)
{
    fLIST list;
    for (int i = 0; i < 65535; ++i)
        ASSERT_EQ(list.Append(a), 1);
    EXPECT_EQ(list.Append(b), 0);
    EXPECT_EQ(list.NoItems(), 65535);
    EXPECT_EQ(list.Last(), &a);
}

TEST(Queue, FirstInFirstOut)
{
    fQUEUE queue;
    queue.Push(a), queue.Push(b), queue.Push(c);
    EXPECT_EQ(queue.Top(), &c);
    EXPECT_EQ(queue.Bottom(), &a);
    for (item* expected : {&a, &b, &c})
        EXPECT_EQ(queue.Pull(), expected);
    EXPECT_EQ(queue.Pull(), nullptr);
    EXPECT_EQ(queue.NoItems(), 0);
}

TEST(Stack, LastInFirstOutAndMoves)
{
    fSTACK stack;
    stack.Push(a), stack.Push(b), stack.Push(c);
    EXPECT_EQ(stack.Pop(), &c);
    fSTACK other;
    other.Push(d);
    const fSTACK answer = (other = stack);
    EXPECT_EQ(forwards(other), "dba");
    EXPECT_EQ(forwards(answer), "dba");
    EXPECT_TRUE(stack.IsEmpty());
    EXPECT_EQ(stack.Pop(), nullptr);
}

TEST(Iterator, CountsAndFollowsLinks)
{
    fLIST list;
    list.Append(a), list.Append(b);
    ITERATOR it;
    it.SetLink(list.Next(nullptr));
    it.Next();
    EXPECT_EQ(it(), 1);
    EXPECT_EQ(it.GetLink()->Object(), &b);
    it.Next();
    EXPECT_EQ(it.GetLink(), nullptr);
    it.Reset();
    it.Previous();
    EXPECT_EQ(it(), 65535);
}

// ---- vPTRLIST ------------------------------------------------------------------------------------------

namespace {

int numbers[] = {1, 3, 5, 7};

std::string digits(vPTRLIST& list)
{
    std::string found;
    for (std::uint16_t i = 0; i < list.NoItems(); ++i)
        found += static_cast<char>('0' + *static_cast<int*>(list.GetAt(i, 0)));
    return found;
}

int by_value(void* x, void* y) { return *static_cast<int*>(x) - *static_cast<int*>(y); }

} // namespace

TEST(PtrList, InsertsInOrderBeforeEqualItems)
{
    vPTRLIST list;
    int equal = 3;
    for (int* n : {&numbers[2], &numbers[0], &numbers[3], &numbers[1], &equal})
        list.InsertInOrder(n, by_value);
    EXPECT_EQ(digits(list), "13357");
    EXPECT_EQ(list.GetAt(1, 0), &equal);
    EXPECT_EQ(list.Current(), &equal);
}

TEST(PtrList, MovesItsCursorWhereSaid)
{
    vPTRLIST list;
    EXPECT_EQ(list.First(1), nullptr);
    EXPECT_EQ(list.Next(1), nullptr);
    list.Append(&numbers[0]), list.Append(&numbers[1]), list.Append(&numbers[2]);
    EXPECT_EQ(list.First(0), &numbers[0]);
    EXPECT_EQ(list.Current(), &numbers[2]) << "looked, not moved";
    EXPECT_EQ(list.GetAt(1, 1), &numbers[1]);
    EXPECT_EQ(list.Next(1), &numbers[2]);
    EXPECT_EQ(list.Next(1), nullptr);
    EXPECT_EQ(list.Current(), &numbers[2]);
    EXPECT_EQ(list.GetAt(3, 1), nullptr);

    list.InsertBefore(&numbers[3], &numbers[0]);
    EXPECT_EQ(list.Current(), &numbers[3]);
    EXPECT_EQ(digits(list), "7135");
    list.Remove(&numbers[1]);
    EXPECT_EQ(list.Current(), &numbers[0]) << "the one before";
    list.Remove(&numbers[3]);
    EXPECT_EQ(list.Current(), &numbers[0]) << "else the one after";
    list.Remove(&numbers[2]);
    EXPECT_EQ(list.Last(0), &numbers[0]);
    EXPECT_EQ(list.Remove(&numbers[0]), 1);
    EXPECT_EQ(list.Current(), nullptr);
    EXPECT_EQ(list.Remove(&numbers[0]), 0);
    EXPECT_EQ(list.InsertAfter(&numbers[0], &numbers[1]), 0);
    EXPECT_EQ(list.NoItems(), 0);
}

TEST(PtrList, FreesOnlyWhatItIsToldTo)
{
    vPTRLIST list;
    list.Append(vMemAlloc(8));
    list.Append(vMemAlloc(8));
    list.Append(vMemAlloc(8));
    EXPECT_EQ(list.Delete(list.First(0)), 1);
    list.DeleteAll();
    list.Append(&numbers[0]);
    list.RemoveAll();
    EXPECT_EQ(list.NoItems(), 0);
}
