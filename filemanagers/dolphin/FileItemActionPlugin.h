// What Dolphin loads at a window's first context menu, and asks for what to add to it.
#pragma once

#include <KAbstractFileItemActionPlugin>
#include <KPluginFactory>
#include <QAction>
#include <QMenu>
#include <memory>
#include <vector>

#include "filemanagers/client/ExtensionLink.h"
#include "platform/Menu.h"

namespace filemanagers {

class FileItemActionPlugin final : public KAbstractFileItemActionPlugin {
  Q_OBJECT

 public:
  FileItemActionPlugin(QObject *parent, const QVariantList &);

  // The actions are this object's, until the next call.
  QList<QAction *> actions(const KFileItemListProperties &items, QWidget *parent) override;

 private:
  // A context menu that is still open may use it.
  struct DeleteLater {
    void operator()(QObject *object) const { object->deleteLater(); }
  };

  // The client's menu for the selection; null for none.
  const platform::Menu *menu() const;
  QList<QAction *> makeActions(const platform::Menu &menu);
  void addEntry(QMenu &submenu, const platform::MenuItem &entry);
  void insertLateActions();

  std::shared_ptr<const MenuSelection> selection_;  // of the last call
  std::vector<std::unique_ptr<QMenu, DeleteLater>> submenus_;
  std::unique_ptr<QAction, DeleteLater> placeholder_;  // null for none
};

class FileItemActionPluginFactory final : public KPluginFactory {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KPluginFactory_iid FILE "halvern-dolphin-actions.json")
  Q_INTERFACES(KPluginFactory)

 public:
  FileItemActionPluginFactory();
};

}  // namespace filemanagers
