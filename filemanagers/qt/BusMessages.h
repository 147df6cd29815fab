// What the extension says on the bus, as the Qt proxy takes it.
#pragma once

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

#include "platform/Menu.h"

namespace filemanagers {

struct ItemBadge {
  QString url;
  QString badge;
};
using BadgesMessage = QList<ItemBadge>;

struct CatalogueEntry {
  QString badge;
  QString label;
  QString iconName;
};
using CatalogueMessage = QList<CatalogueEntry>;

struct MenuEntry {
  QString kind;
  QString title;
  QString action;
};
struct TopMenuItem {
  QString title;
  QList<MenuEntry> entries;
};
using MenuMessage = QList<TopMenuItem>;

// Qt needs both directions of each.
QDBusArgument &operator<<(QDBusArgument &argument, const ItemBadge &item);
QDBusArgument &operator<<(QDBusArgument &argument, const CatalogueEntry &entry);
QDBusArgument &operator<<(QDBusArgument &argument, const MenuEntry &entry);
QDBusArgument &operator<<(QDBusArgument &argument, const TopMenuItem &item);
const QDBusArgument &operator>>(const QDBusArgument &argument, ItemBadge &item);
const QDBusArgument &operator>>(const QDBusArgument &argument, CatalogueEntry &entry);
const QDBusArgument &operator>>(const QDBusArgument &argument, MenuEntry &entry);
const QDBusArgument &operator>>(const QDBusArgument &argument, TopMenuItem &item);

// Makes them known to Qt; to be called before a proxy is made.
void registerBusMessages();

platform::Menu menuOfMessage(const MenuMessage &message);

}  // namespace filemanagers

Q_DECLARE_METATYPE(filemanagers::ItemBadge)
Q_DECLARE_METATYPE(filemanagers::CatalogueEntry)
Q_DECLARE_METATYPE(filemanagers::MenuEntry)
Q_DECLARE_METATYPE(filemanagers::TopMenuItem)
