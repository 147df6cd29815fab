#include <gtest/gtest.h>

#include "filemanagers/glib/MenuReading.h"
#include "tests/filemanagers/client/RecordingExtensionEvents.h"

namespace {

std::string read(const char *text) {
  const platform::VariantHandle menu(
      g_variant_parse(G_VARIANT_TYPE("a(sa(sss))"), text, nullptr, nullptr, nullptr));
  return textOfMenu(filemanagers::menuOfVariant(menu.get()));
}

TEST(MenuReading, TopItemsHaveEntriesAndSeparatorsInTheirOrder) {
  EXPECT_EQ(read("[('Subversion', [('item', 'Update', 'updateItems:'), ('separator', '', ''),"
                 " ('item', 'Commit…', 'commitItems:')]),"
                 " ('Another', [('item', 'Add', 'addItems:')])]"),
            "Subversion[Update=updateItems:, -, Commit…=commitItems:], Another[Add=addItems:]");
}

TEST(MenuReading, AMenuWithoutAnythingIsEmpty) {
  EXPECT_EQ(read("[]"), "");
  EXPECT_EQ(read("[('Subversion', [])]"), "Subversion[]");
}

}  // namespace
