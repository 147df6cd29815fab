// The extension's menu as objects of a file manager, for which GApplication stands in: it has the
// signal "activate" too.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "filemanagers/glib/ContextMenuItems.h"
#include "platform/linux/GLibHandles.h"
#include "tests/filemanagers/client/HandCrankedMainLoop.h"
#include "tests/filemanagers/client/RecordingExtensionLink.h"

using filemanagers::MenuItemMaker;
using platform::FIMenuKind;
using platform::ObjectHandle;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

using Strings = std::vector<std::string>;
using Objects = std::vector<ObjectHandle<GObject>>;

// Attached to an object under that name, and freed with it.
template <typename T>
T &attached(GObject *object, const char *name) {
  auto *found = static_cast<T *>(g_object_get_data(object, name));
  if (found == nullptr) {
    auto made = std::make_unique<T>();
    found = made.get();
    const auto destroy = [](gpointer data) {
      const std::unique_ptr<T> owner(static_cast<T *>(data));
    };
    g_object_set_data_full(object, name, made.release(), destroy);
  }
  return *found;
}

GObject *makeItem(const char *name, const char *label) {
  GObject *item = G_OBJECT(g_application_new(nullptr, G_APPLICATION_NON_UNIQUE));
  attached<std::string>(item, "name") = name;
  attached<std::string>(item, "label") = label;
  return item;
}

constexpr MenuItemMaker maker = {
    .makeItem = makeItem,
    .makeSeparator = nullptr,
    .makeMenu = [] { return G_OBJECT(g_object_new(G_TYPE_OBJECT, nullptr)); },
    .append =
        [](GObject *menu, GObject *item) {
          attached<Objects>(menu, "items").emplace_back(G_OBJECT(g_object_ref(item)));
        },
    .setSubmenu =
        [](GObject *item, GObject *menu) {
          attached<Objects>(item, "submenu").emplace_back(G_OBJECT(g_object_ref(menu)));
        },
};

platform::Menu menuOf(const Strings &titles) {
  auto submenu = std::make_shared<platform::Menu>();
  for (const std::string &title : titles) {
    platform::MenuItem item;
    item.isSeparator = title == "-";
    item.title = item.isSeparator ? "" : title;
    item.action = item.isSeparator ? "" : title + "Items:";
    submenu->items.push_back(item);
  }
  platform::MenuItem topItem;
  topItem.title = "Halvern";
  topItem.submenu = submenu;
  platform::Menu menu;
  menu.items.push_back(topItem);
  return menu;
}

class ContextMenuItems : public ::testing::Test {
 protected:
  void offer(const Strings &titles) {
    client.appeared();
    client.takeDirectories({"/wc"});
    client.takeMenu(FIMenuKind::contextualMenuForItems, menuOf(titles));
    client.takeMenu(FIMenuKind::contextualMenuForContainer, menuOf(titles));
    link.journal.clear();
  }

  // Takes the list over, as a file manager does.
  static Objects taken(GList *list) {
    Objects items;
    for (const GList *entry = list; entry != nullptr; entry = entry->next) {
      items.emplace_back(static_cast<GObject *>(entry->data));
    }
    g_list_free(list);
    return items;
  }

  Objects forPaths(const Strings &paths) {
    return taken(filemanagers::menuItemsForPaths(maker, client, paths));
  }

  static Objects &entriesOf(const Objects &topItems) {
    return attached<Objects>(attached<Objects>(topItems.at(0).get(), "submenu").at(0).get(),
                             "items");
  }

  static Strings textsOf(const Objects &items, const char *kind) {
    Strings texts;
    for (const auto &item : items) {
      texts.push_back(attached<std::string>(item.get(), kind));
    }
    return texts;
  }

  filemanagers::testing::HandCrankedMainLoop loop;
  filemanagers::testing::RecordingExtensionLink link;
  filemanagers::ExtensionClient client{
      link, loop, {.redraw = [](const std::string &) {}, .menuChanged = [] {}}};
};

}  // namespace

TEST_F(ContextMenuItems, AreNoneWhereThereIsNoMenu) {
  EXPECT_THAT(forPaths({"/wc/a"}), IsEmpty());
  offer({"update"});
  EXPECT_THAT(forPaths({"/elsewhere/a"}), IsEmpty());
}

TEST_F(ContextMenuItems, HaveTheTitlesAsTheyAreWritten) {
  offer({"update", "-", "a_title & more"});
  const Objects items = forPaths({"/wc/a"});
  EXPECT_THAT(textsOf(items, "label"), ElementsAre("Halvern"));
  EXPECT_THAT(textsOf(entriesOf(items), "label"), ElementsAre("update", "a__title & more"));
}

TEST_F(ContextMenuItems, PerformTheirActionOnWhatIsSelected) {
  offer({"update", "add"});
  const Objects items = forPaths({"/wc/a", "/wc/b"});
  g_signal_emit_by_name(entriesOf(items).at(1).get(), "activate");
  EXPECT_THAT(link.journal.calls(), ElementsAre("performAction addItems: on /wc/a, /wc/b in "));
}

TEST_F(ContextMenuItems, PerformTheirActionOnTheFolderWhoseBackgroundItIs) {
  offer({"update"});
  const Objects items = taken(filemanagers::menuItemsForFolder(maker, client, "/wc"));
  g_signal_emit_by_name(entriesOf(items).at(0).get(), "activate");
  EXPECT_THAT(link.journal.calls(), ElementsAre("performAction updateItems: on  in /wc"));
}

TEST_F(ContextMenuItems, HaveOtherNamesOnItemsThanOnTheBackground) {
  offer({"update", "add"});
  const Strings onItems = textsOf(entriesOf(forPaths({"/wc/a"})), "name");
  const Strings onBackground =
      textsOf(entriesOf(taken(filemanagers::menuItemsForFolder(maker, client, "/wc"))), "name");
  std::set<std::string> names(onItems.begin(), onItems.end());
  names.insert(onBackground.begin(), onBackground.end());
  EXPECT_THAT(names, SizeIs(4));
}

TEST_F(ContextMenuItems, OfAMenuWithoutEntriesAreNone) {
  offer({});
  EXPECT_THAT(forPaths({"/wc/a"}), IsEmpty());
}

// Caja frees the top item, and never the submenu.
TEST_F(ContextMenuItems, KeepTheSelectionOnlyWhileTheTopItemIsThere) {
  offer({"update"});
  Objects items = forPaths({"/wc/a"});
  const ObjectHandle<GObject> entry(G_OBJECT(g_object_ref(entriesOf(items).at(0).get())));
  items.clear();
  g_signal_emit_by_name(entry.get(), "activate");
  EXPECT_THAT(link.journal.calls(), IsEmpty());
}
