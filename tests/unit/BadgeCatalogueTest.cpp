#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "extension/BadgeCatalogue.h"

using platform::SystemColor;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::FieldsAre;
using ::testing::Not;

namespace {

TEST(BadgeCatalogue, HasSixBadgesInTheOrderOfTheirRegistration) {
  EXPECT_THAT(
      badgeCatalogue,
      ElementsAre(
          FieldsAre("conflicted", "Conflicted", "exclamationmark.circle.fill", SystemColor::red),
          FieldsAre("modified", "Modified", "pencil.circle.fill", SystemColor::orange),
          FieldsAre("added", "Added", "plus.circle.fill", SystemColor::blue),
          FieldsAre("deleted", "Deleted", "minus.circle.fill", SystemColor::gray),
          FieldsAre("locked", "Locked", "lock.circle.fill", SystemColor::purple),
          FieldsAre("unversioned", "Unversioned", "questionmark.circle.fill", SystemColor::gray)));
}

TEST(BadgeCatalogue, HasNoRowForCleanItems) {
  EXPECT_THAT(
      badgeCatalogue,
      Not(Contains(::testing::Field(&BadgeCatalogueRow::identifier, KTRFinderSyncBadgeClean))));
}

TEST(BadgeCatalogue, TellsDeletedAndUnversionedApartByTheGlyphAlone) {
  const BadgeCatalogueRow &deleted = badgeCatalogue[3];
  const BadgeCatalogueRow &unversioned = badgeCatalogue[5];
  EXPECT_EQ(deleted.color, unversioned.color);
  EXPECT_NE(deleted.symbolName, unversioned.symbolName);
}

}  // namespace
