#include "filemanagers/dolphin/FileItemActionPlugin.h"

#include <KFileItem>
#include <KFileItemListProperties>
#include <QWidget>
#include <string>
#include <utility>

#include "filemanagers/dolphin/LocalPath.h"
#include "filemanagers/dolphin/MenuPlugIn.h"

namespace filemanagers {

namespace {

// In Qt's labels an ampersand marks the key that chooses the item.
QString labelOf(const std::string &title) {
  return QString::fromStdString(title).replace('&', "&&");
}

// A folder that is listed has an item for itself as well, with the name that it has in its own
// listing. That item stands for its background.
MenuSelection selectionOf(const KFileItemList &items) {
  MenuSelection selection;
  if (items.size() == 1 && items.front().name() == QLatin1String(".")) {
    selection.targeted = pathOf(items.front().url());
  } else {
    for (const KFileItem &item : items) {
      selection.selected.push_back(pathOf(item.url()));
    }
  }
  return selection;
}

}  // namespace

FileItemActionPlugin::FileItemActionPlugin(QObject *parent, const QVariantList & /*arguments*/)
    : KAbstractFileItemActionPlugin(parent) {
  connect(&MenuPlugIn::instance(), &MenuPlugIn::menuChanged, this,
          &FileItemActionPlugin::insertLateActions);
}

QList<QAction *> FileItemActionPlugin::actions(const KFileItemListProperties &items,
                                               QWidget * /*parent*/) {
  submenus_.clear();
  placeholder_.reset();
  selection_ = std::make_shared<const MenuSelection>(selectionOf(items.items()));
  if (const platform::Menu *known = menu()) {
    return makeActions(*known);
  }
  placeholder_.reset(std::make_unique<QAction>().release());
  placeholder_->setVisible(false);
  return {placeholder_.get()};
}

// Before the first context menu nothing has asked for the extension's part in it, which comes when
// that menu is open already. It takes the place of an action that nobody sees.
void FileItemActionPlugin::insertLateActions() {
  if (placeholder_ == nullptr) {
    return;
  }
  const platform::Menu *known = menu();
  if (known == nullptr) {
    return;
  }
  const QList<QAction *> actions = makeActions(*known);
  for (QWidget *widget : placeholder_->associatedWidgets()) {
    widget->insertActions(placeholder_.get(), actions);
  }
  placeholder_.reset();
}

const platform::Menu *FileItemActionPlugin::menu() const {
  ExtensionClient &client = MenuPlugIn::instance().client();
  return selection_->targeted.empty() ? client.menuForItems(selection_->selected)
                                      : client.menuForFolder(selection_->targeted);
}

QList<QAction *> FileItemActionPlugin::makeActions(const platform::Menu &menu) {
  QList<QAction *> actions;
  for (const platform::MenuItem &topItem : menu.items) {
    std::unique_ptr<QMenu, DeleteLater> submenu(
        std::make_unique<QMenu>(labelOf(topItem.title)).release());
    if (topItem.submenu != nullptr) {
      for (const platform::MenuItem &entry : topItem.submenu->items) {
        addEntry(*submenu, entry);
      }
    }
    actions.push_back(submenu->menuAction());
    submenus_.push_back(std::move(submenu));
  }
  return actions;
}

void FileItemActionPlugin::addEntry(QMenu &submenu, const platform::MenuItem &entry) {
  if (entry.isSeparator) {
    submenu.addSeparator();
    return;
  }
  const QAction *action = submenu.addAction(labelOf(entry.title));
  connect(action, &QAction::triggered, this, [name = entry.action, selection = selection_] {
    MenuPlugIn::instance().client().performAction(name, *selection);
  });
}

FileItemActionPluginFactory::FileItemActionPluginFactory() {
  registerPlugin<FileItemActionPlugin>();
}

}  // namespace filemanagers
