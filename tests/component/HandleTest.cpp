#include <gtest/gtest.h>

#include <utility>

#include "component/QELXIVARDOSLRDXMLHandler.h"
#include "platform/ZYMFillDictionary.h"
#include "tests/support/ModuleTest.h"

namespace {

/// A component that others see counting.
class Counting : public ZYMIDOMNodeList {
  ZYM_DECLARE_COMPONENT(Counting);

 public:
  explicit Counting(std::uint32_t& references) : references_(references) { references = 1; }
  std::uint32_t AddRef() override {
    ++calls_;
    return references_ = ZYMIDOMNodeList::AddRef();
  }
  std::uint32_t Release() override {
    ++calls_;
    // The last one ends the component, not what counts for it.
    std::uint32_t& references = references_;
    return references = ZYMIDOMNodeList::Release();
  }
  HRESULT item(int, ZYMIDOMNode_var&) override { return E_NOTIMPL; }
  HRESULT getLength(int&) override { return E_NOTIMPL; }
  int Calls() const { return calls_; }

 private:
  std::uint32_t& references_;
  int calls_ = 0;
};
ZYM_DEFINE_COMPONENT(Counting, ZYMIDOMNodeList)

using Counting_var = ZYMHandle<Counting>;

class HandleTest : public ModuleTest {
 protected:
  std::uint32_t a_ = 0;
  std::uint32_t b_ = 0;
};

TEST_F(HandleTest, each_handle_holds_one_reference_however_it_came_by_it) {
  Counting_var first = ZYMMakeComponent<Counting>(a_);
  EXPECT_EQ(a_, 1U) << "the creator's reference is taken over";
  {
    const Counting_var copy = first;  // NOLINT(performance-unnecessary-copy-initialization): it is what is counted
    EXPECT_EQ(a_, 2U);
    const Counting_var fromPointer(first.Get());
    const ZYMIDOMNodeList_var wider = first;
    EXPECT_EQ(a_, 4U);
    const ZYMBaseUnknown_var root = wider;
    const ZYMIDOMNodeList_var narrowed(root);
    EXPECT_EQ(narrowed.Get(), first.Get());
    EXPECT_EQ(a_, 6U);
    EXPECT_TRUE(QELXIVARDOSLRDXMLHandler_var(root).IsNull() && ZYMIDOMNode_var(first.Get()).IsNull());
    EXPECT_EQ(a_, 6U) << "a narrowing that fails keeps nothing";
  }
  EXPECT_EQ(a_, 1U);
  EXPECT_EQ(Counting_var(nullptr), Counting_var(static_cast<Counting*>(nullptr)));
  first = nullptr;
  EXPECT_EQ(a_, 0U);
}

TEST_F(HandleTest, assigning_gives_back_what_was_held_and_a_handle_may_be_assigned_to_itself) {
  Counting_var a = ZYMMakeComponent<Counting>(a_);
  Counting_var b = ZYMMakeComponent<Counting>(b_);
  Counting_var& same = a;
  a = same;
  EXPECT_EQ(a_, 1U);
  EXPECT_EQ(a.Get(), same.Get());
  const Counting_var copy = a;
  a = copy;
  EXPECT_EQ(a_, 2U) << "an equal handle";
  b = a;
  EXPECT_EQ(b_, 0U);
  EXPECT_EQ(a_, 3U);
  b = nullptr;
  a = nullptr;
  EXPECT_EQ(a_, 1U);
}

TEST_F(HandleTest, moving_takes_the_reference_along_and_counts_nothing) {
  Counting_var a = ZYMMakeComponent<Counting>(a_);
  Counting_var b = ZYMMakeComponent<Counting>(b_);
  Counting* const component = a.Get();
  Counting_var moved = std::move(a);
  EXPECT_TRUE(a.IsNull());  // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move): what is promised of it
  b = std::move(moved);
  EXPECT_TRUE(moved.IsNull());  // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move): the same
  EXPECT_EQ(b_, 0U) << "what was held is given back at once";
  Counting_var& same = b;
  b = std::move(same);
  EXPECT_EQ(b.Get(), component) << "moved onto itself, it keeps its component";
  a.Swap(b);
  EXPECT_EQ(a.Get(), component);
  EXPECT_TRUE(b.IsNull());
  EXPECT_EQ(a_, 1U);
  EXPECT_EQ(component->Calls(), 0);
}

}  // namespace
