#include "filemanagers/qt/BusMessages.h"

#include <QDBusMetaType>
#include <memory>
#include <utility>

namespace filemanagers {

namespace {

template <typename... Members>
QDBusArgument &write(QDBusArgument &argument, const Members &...members) {
  argument.beginStructure();
  (argument << ... << members);
  argument.endStructure();
  return argument;
}

template <typename... Members>
const QDBusArgument &read(const QDBusArgument &argument, Members &...members) {
  argument.beginStructure();
  (argument >> ... >> members);
  argument.endStructure();
  return argument;
}

template <typename Message>
void registerMessage(const char *name) {
  qDBusRegisterMetaType<typename Message::value_type>();
  qDBusRegisterMetaType<Message>();
  // By the name under which the proxy's signals and answers have it.
  qRegisterMetaType<Message>(name);
}

}  // namespace

QDBusArgument &operator<<(QDBusArgument &argument, const ItemBadge &item) {
  return write(argument, item.url, item.badge);
}

QDBusArgument &operator<<(QDBusArgument &argument, const CatalogueEntry &entry) {
  return write(argument, entry.badge, entry.label, entry.iconName);
}

QDBusArgument &operator<<(QDBusArgument &argument, const MenuEntry &entry) {
  return write(argument, entry.kind, entry.title, entry.action);
}

QDBusArgument &operator<<(QDBusArgument &argument, const TopMenuItem &item) {
  return write(argument, item.title, item.entries);
}

const QDBusArgument &operator>>(const QDBusArgument &argument, ItemBadge &item) {
  return read(argument, item.url, item.badge);
}

const QDBusArgument &operator>>(const QDBusArgument &argument, CatalogueEntry &entry) {
  return read(argument, entry.badge, entry.label, entry.iconName);
}

const QDBusArgument &operator>>(const QDBusArgument &argument, MenuEntry &entry) {
  return read(argument, entry.kind, entry.title, entry.action);
}

const QDBusArgument &operator>>(const QDBusArgument &argument, TopMenuItem &item) {
  return read(argument, item.title, item.entries);
}

void registerBusMessages() {
  registerMessage<BadgesMessage>("filemanagers::BadgesMessage");
  registerMessage<CatalogueMessage>("filemanagers::CatalogueMessage");
  qDBusRegisterMetaType<MenuEntry>();
  qDBusRegisterMetaType<QList<MenuEntry>>();
  registerMessage<MenuMessage>("filemanagers::MenuMessage");
}

platform::Menu menuOfMessage(const MenuMessage &message) {
  platform::Menu menu;
  for (const TopMenuItem &topItem : message) {
    auto submenu = std::make_shared<platform::Menu>();
    for (const MenuEntry &entry : topItem.entries) {
      platform::MenuItem item;
      item.isSeparator = entry.kind == QLatin1String("separator");
      item.title = entry.title.toStdString();
      item.action = entry.action.toStdString();
      submenu->items.push_back(std::move(item));
    }
    platform::MenuItem item;
    item.title = topItem.title.toStdString();
    item.submenu = std::move(submenu);
    menu.items.push_back(std::move(item));
  }
  return menu;
}

}  // namespace filemanagers
