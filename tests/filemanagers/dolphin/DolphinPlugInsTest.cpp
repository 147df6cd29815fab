// The two modules as Dolphin uses them: loaded into a process with Qt's event loop, and with the
// real extension on a private bus. They keep to the process's first session bus, so all tests share
// one session.
#include <KAbstractFileItemActionPlugin>
#include <KFileItem>
#include <KFileItemListProperties>
#include <KOverlayIconPlugin>
#include <KPluginFactory>
#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QPluginLoader>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "tests/filemanagers/qt/QtEventLoop.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/files/TemporaryDirectory.h"
#include "tests/support/session/ExtensionSession.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

// What a menu shows, line by line; entries of submenus after a tab.
std::vector<std::string> visibleEntries(const QMenu &menu, const std::string &indentation = "") {
  std::vector<std::string> lines;
  for (const QAction *action : menu.actions()) {
    if (!action->isVisible()) {
      continue;
    }
    lines.push_back(indentation + (action->isSeparator() ? "---" : action->text().toStdString()));
    if (action->menu() != nullptr) {
      for (const std::string &line : visibleEntries(*action->menu(), "\t")) {
        lines.push_back(line);
      }
    }
  }
  return lines;
}

class DolphinPlugInsTest : public ::testing::Test {
 protected:
  struct World {
    World() {
      wc.addFile("clean.txt", "clean");
      wc.addFile("modified.txt", "before");
      wc.commit();
      writeFile(wc / "modified.txt", "after");
      session.halvern({"add", wc.path()});
    }
    ExtensionSession session;
    WorkingCopy wc{session.directory()};
    EnvironmentVariable data{"XDG_DATA_HOME", session / "data"};
  };

  static void SetUpTestSuite() { world = std::make_unique<World>(); }
  static void TearDownTestSuite() { world.reset(); }

  static QUrl url(const std::string &relative) {
    return QUrl::fromLocalFile(QString::fromStdString(world->wc / relative));
  }

  // The action plug-in of one window.
  static KAbstractFileItemActionPlugin *makeActionPlugin(QObject *window) {
    QPluginLoader loader(HALVERN_ACTIONS);
    auto *factory = qobject_cast<KPluginFactory *>(loader.instance());
    return factory == nullptr ? nullptr : factory->create<KAbstractFileItemActionPlugin>(window);
  }

  static std::unique_ptr<World> world;
};

std::unique_ptr<DolphinPlugInsTest::World> DolphinPlugInsTest::world;

TEST_F(DolphinPlugInsTest, BadgesComeAsTheIconsFiles) {
  QPluginLoader loader(HALVERN_OVERLAYS);
  auto *plugIn = qobject_cast<KOverlayIconPlugin *>(loader.instance());
  ASSERT_NE(plugIn, nullptr) << loader.errorString().toStdString();
  std::vector<QUrl> redrawn;
  QObject::connect(plugIn, &KOverlayIconPlugin::overlaysChanged,
                   [&](const QUrl &item) { redrawn.push_back(item); });
  EXPECT_TRUE(plugIn->getOverlays(url("clean.txt")).isEmpty());
  EXPECT_TRUE(plugIn->getOverlays(url("modified.txt")).isEmpty());
  EXPECT_TRUE(turnQtLoopUntil([&] { return !redrawn.empty(); }));
  EXPECT_THAT(redrawn, ElementsAre(url("modified.txt")));
  EXPECT_EQ(
      plugIn->getOverlays(url("modified.txt")),
      QStringList(QString::fromStdString(
          world->session / "data/icons/hicolor/scalable/emblems/emblem-halvern-modified.svg")));
  EXPECT_TRUE(plugIn->getOverlays(url("clean.txt")).isEmpty());
  EXPECT_TRUE(plugIn->getOverlays(QUrl("sftp://example.com/modified.txt")).isEmpty());
}

TEST_F(DolphinPlugInsTest, TheFirstMenuGetsItsPartWhenItIsKnownAndLaterOnesAtOnce) {
  QObject firstWindow;
  auto *plugIn = makeActionPlugin(&firstWindow);
  ASSERT_NE(plugIn, nullptr);
  const KFileItemListProperties items({KFileItem(url("modified.txt")), KFileItem(url(""))});
  const std::vector<std::string> expected = {
      "before", "Halvern", "\tShow in Halvern", "\t---",     "\tUpdate", "\tCommit Changes…",
      "\t---",  "\tAdd",   "\tIgnore",          "\tRevert…", "after"};

  QMenu first;
  first.addAction("before");
  first.addActions(plugIn->actions(items, nullptr));
  first.addAction("after");
  EXPECT_THAT(visibleEntries(first), ElementsAre("before", "after"));
  EXPECT_TRUE(turnQtLoopUntil([&] { return visibleEntries(first).size() > 2; }));
  EXPECT_EQ(visibleEntries(first), expected);

  QObject secondWindow;
  QMenu second;
  second.addAction("before");
  second.addActions(makeActionPlugin(&secondWindow)->actions(items, nullptr));
  second.addAction("after");
  EXPECT_EQ(visibleEntries(second), expected);
}

TEST_F(DolphinPlugInsTest, ThereIsNoMenuForWhatIsOutsideOrRemote) {
  QObject window;
  auto *plugIn = makeActionPlugin(&window);
  ASSERT_NE(plugIn, nullptr);
  const KFileItemListProperties inside({KFileItem(url("clean.txt"))});
  EXPECT_TRUE(
      turnQtLoopUntil([&] { return plugIn->actions(inside, nullptr).front()->isVisible(); }));
  const auto menuFor = [&](const QUrl &other) {
    QMenu menu;
    menu.addActions(plugIn->actions(
        KFileItemListProperties({KFileItem(url("clean.txt")), KFileItem(other)}), nullptr));
    return visibleEntries(menu);
  };
  EXPECT_THAT(menuFor(QUrl("file:///outside")), IsEmpty());
  EXPECT_THAT(menuFor(QUrl("sftp://example.com/clean.txt")), IsEmpty());
}

}  // namespace

// What Qt and KDE read and write by themselves is in a directory of the tests.
int main(int argc, char **argv) {
  ::testing::InitGoogleMock(&argc, argv);
  const TemporaryDirectory home;
  for (const char *name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"}) {
    const std::string path = home / name;
    std::filesystem::create_directory(path);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    qputenv(name, path.c_str());
  }
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
