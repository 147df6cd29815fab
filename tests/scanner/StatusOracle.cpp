#include "tests/scanner/StatusOracle.h"

#include <cstring>
#include <stdexcept>
#include <vector>

#include "platform/linux/GLibHandles.h"

namespace {

struct Entry {
  std::string path;
  std::string item;
  std::string props;
  bool isTreeConflicted = false;
  bool hasLock = false;
};

struct Parse {
  std::vector<Entry> entries;
  bool isInWorkingCopyStatus = false;
};

std::string attribute(const char **names, const char **values, const char *name) {
  for (; *names != nullptr; ++names, ++values) {
    if (std::strcmp(*names, name) == 0) {
      return *values;
    }
  }
  return {};
}

void beginElement(GMarkupParseContext *, const char *name, const char **names, const char **values,
                  gpointer data, GError **) {
  auto &parse = *static_cast<Parse *>(data);
  const std::string element = name;
  if (element == "entry") {
    parse.entries.push_back({attribute(names, values, "path"), "", "", false, false});
  } else if (element == "wc-status") {
    parse.isInWorkingCopyStatus = true;
    Entry &entry = parse.entries.back();
    entry.item = attribute(names, values, "item");
    entry.props = attribute(names, values, "props");
    entry.isTreeConflicted = attribute(names, values, "tree-conflicted") == "true";
  } else if (element == "lock" && parse.isInWorkingCopyStatus) {
    parse.entries.back().hasLock = true;
  }
}

void endElement(GMarkupParseContext *, const char *name, gpointer data, GError **) {
  if (std::strcmp(name, "wc-status") == 0) {
    static_cast<Parse *>(data)->isInWorkingCopyStatus = false;
  }
}

std::vector<Entry> entriesOf(const std::string &xml) {
  static constexpr GMarkupParser parser = {beginElement, endElement, nullptr, nullptr, nullptr};
  Parse parse;
  const platform::Handle<GMarkupParseContext, g_markup_parse_context_unref> context(
      g_markup_parse_context_new(&parser, static_cast<GMarkupParseFlags>(0), &parse, nullptr));
  if (g_markup_parse_context_parse(context.get(), xml.data(), static_cast<gssize>(xml.size()),
                                   nullptr) == FALSE ||
      g_markup_parse_context_end_parse(context.get(), nullptr) == FALSE) {
    throw std::runtime_error("The status is no XML: " + xml);
  }
  return parse.entries;
}

// Empty for none.
std::string ownBadge(const Entry &entry) {
  if (entry.isTreeConflicted || entry.item == "conflicted" || entry.props == "conflicted") {
    return "conflicted";
  }
  // The command shows the text's state apart from the properties'; a change in either is a change.
  if (entry.item == "modified" || entry.item == "replaced" ||
      (entry.item == "normal" && entry.props == "modified")) {
    return "modified";
  }
  if (entry.item == "normal" && entry.hasLock) {
    return "locked";
  }
  if (entry.item == "missing" || entry.item == "deleted") {
    return "deleted";
  }
  if (entry.item == "added" || entry.item == "unversioned") {
    return entry.item;
  }
  return {};
}

bool isBeneath(const std::string &path, const std::string &folder) {
  return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

}  // namespace

OracleBadges badgesByStatusCommand(const std::string &root, const std::string &xml) {
  OracleBadges result;
  std::map<std::string, std::string> own;
  for (const Entry &entry : entriesOf(xml)) {
    const std::string badge = ownBadge(entry);
    if (!badge.empty()) {
      own[entry.path] = badge;
    }
    result.kinds.insert("item " + entry.item);
    result.kinds.insert("props " + entry.props);
    if (entry.isTreeConflicted) {
      result.kinds.insert("tree conflict");
    }
    if (entry.hasLock) {
      result.kinds.insert(badge == "locked" ? "locked" : "locked and changed");
    }
  }

  std::set<std::string> folders;
  for (const auto &[path, badge] : own) {
    for (std::string folder = path; isBeneath(folder, root);) {
      folder.erase(folder.rfind('/'));
      folders.insert(folder);
    }
  }
  result.badges = own;
  for (const std::string &folder : folders) {
    bool hasConflict = own.contains(folder) && own.at(folder) == "conflicted";
    bool hasChange = false;
    for (const auto &[path, badge] : own) {
      if (isBeneath(path, folder)) {
        hasConflict = hasConflict || badge == "conflicted";
        hasChange = hasChange || badge != "locked";
      }
    }
    if (hasConflict) {
      result.badges[folder] = "conflicted";
    } else if (hasChange) {
      result.badges[folder] = "modified";
    }
  }
  return result;
}
