#include "tests/unit/RegistryFixture.h"

using ::testing::AnyOf;

namespace {

using RootLookup = RegistryFixture;

TEST_F(RootLookup, APathMapsToTheRootThatIsItOrContainsIt) {
  registerRoots({"/Users/a/wc"});
  EXPECT_EQ(peer.rootPathContaining("/Users/a/wc"), "/Users/a/wc");
  EXPECT_EQ(peer.rootPathContaining("/Users/a/wc/x/y"), "/Users/a/wc");
}

TEST_F(RootLookup, ANeighbourWithTheSameBeginningOrAnotherCaseIsOutside) {
  registerRoots({"/Users/a/wc"});
  EXPECT_EQ(peer.rootPathContaining("/Users/a/wc2/x"), std::nullopt);
  EXPECT_EQ(peer.rootPathContaining("/Users/a/WC/x"), std::nullopt);
  EXPECT_EQ(peer.rootPathContaining("/Users/a"), std::nullopt);
}

TEST_F(RootLookup, APathInNestedRootsMapsToEitherOfThem) {
  registerRoots({"/w", "/w/inner"});
  EXPECT_THAT(peer.rootPathContaining("/w/inner/x"), AnyOf("/w", "/w/inner"));
  EXPECT_EQ(peer.rootPathContaining("/w/other"), "/w");
}

TEST_F(RootLookup, TheRootOfTheFileSystemContainsOnlyItself) {
  registerRoots({"/"});
  EXPECT_EQ(peer.rootPathContaining("/"), "/");
  EXPECT_EQ(peer.rootPathContaining("/x"), std::nullopt);
}

TEST_F(RootLookup, BytesThatAreNotTextAreComparedAsTheyAre) {
  registerRoots({"/w\xff c%41\n"});
  EXPECT_EQ(peer.rootPathContaining("/w\xff c%41\n/x"), "/w\xff c%41\n");
  EXPECT_EQ(peer.rootPathContaining("/w\xff cA\n/x"), std::nullopt);
}

}  // namespace
