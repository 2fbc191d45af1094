#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "platform/dom/AnchorTable.h"
#include "platform/dom/DomStorage.h"

namespace ZYMDom {
namespace {

// What an explicit instantiation names may be private: the chains are what a search walks along.
std::vector<NodeAnchor*>& ChainsOf(AnchorTable& table);
template <auto Chains>
struct Reach {
  friend std::vector<NodeAnchor*>& ChainsOf(AnchorTable& table) { return table.*Chains; }
};
template struct Reach<&AnchorTable::chains_>;

NodeAnchor* NextOf(const NodeAnchor& anchor);
template <auto Next>
struct Follow {
  friend NodeAnchor* NextOf(const NodeAnchor& anchor) { return anchor.*Next; }
};
template struct Follow<&NodeAnchor::next_>;

/// How many steps it takes to find each of the anchors once.
std::size_t StepsToFindAll(AnchorTable& table) {
  std::size_t steps = 0;
  for (const NodeAnchor* chain : ChainsOf(table)) {
    for (std::size_t place = 1; chain != nullptr; ++place, chain = NextOf(*chain)) {
      steps += place;
    }
  }
  return steps;
}

TEST(AnchorTableTest, finding_an_anchor_takes_as_few_steps_among_many_as_among_few) {
  auto* const storage = new DomStorage;
  std::vector<std::unique_ptr<NodeAnchor>> anchors;
  for (const std::size_t count : {100U, 10'000U}) {
    while (anchors.size() < count) {
      anchors.push_back(std::make_unique<NodeAnchor>(*storage, storage->NewElement("a")));
    }
    EXPECT_EQ(storage->Anchors().Size(), count);
    EXPECT_LT(StepsToFindAll(storage->Anchors()), 3 * count);
    // No more room than the anchors need.
    EXPECT_LE(ChainsOf(storage->Anchors()).size(), std::max<std::size_t>(16, 2 * count));
  }
  // The tree goes with the last of them.
}

}  // namespace
}  // namespace ZYMDom
