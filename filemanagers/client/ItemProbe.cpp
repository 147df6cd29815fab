#include "filemanagers/client/ItemProbe.h"

#include <algorithm>
#include <utility>

#include "filemanagers/client/PathTree.h"

namespace filemanagers {

namespace {

// How much the number of items may grow without a probe, at least.
constexpr std::size_t smallestGrowth = 1'000;

// As many redraws as nobody notices.
constexpr std::size_t redrawCountPerTurn = 250;

}  // namespace

ItemProbe::ItemProbe(MainLoop &mainLoop, FileManager fileManager)
    : mainLoop_(mainLoop),
      fileManager_(std::move(fileManager)),
      schedule_(mainLoop, {.redraw = [this] { probe(); },
                           .leaveSilent = [this] { leaveSilentItems(); },
                           .isStillNeeded = [this] { return folders_.size() > 1; }}) {}

void ItemProbe::take(const std::string &path) {
  const auto [item, isNew] = items_.insert_or_assign(path, true);
  if (!isNew) {
    return;
  }
  const std::string_view folder = folderOf(path);
  const bool isOfNewFolder = !folders_.contains(folder);
  if (isOfNewFolder) {
    folders_.emplace(folder);
  }
  const std::size_t growth = std::max(countAfterProbe_ / 2, smallestGrowth);
  const bool hasGrown = !schedule_.isUnderWay() && items_.size() > countAfterProbe_ + growth;
  if (hasGrown || (isOfNewFolder && folders_.size() > 1)) {
    schedule_.plan();
  }
}

void ItemProbe::probe() {
  for (auto &[path, wasAskedFor] : items_) {
    wasAskedFor = false;
    undrawn_.push_back(path);
  }
  redrawNext();
}

void ItemProbe::redrawNext() {
  for (std::size_t count = 0; count < redrawCountPerTurn && !undrawn_.empty(); ++count) {
    const std::string path = std::move(undrawn_.back());
    undrawn_.pop_back();
    fileManager_.redraw(path);
  }
  if (undrawn_.empty()) {
    schedule_.waitForAnswers();
  } else {
    mainLoop_.callSoon([this] { redrawNext(); });
  }
}

void ItemProbe::leaveSilentItems() {
  folders_.clear();
  std::erase_if(items_, [this](const auto &item) {
    const auto &[path, wasAskedFor] = item;
    if (wasAskedFor) {
      folders_.emplace(folderOf(path));
    } else {
      fileManager_.leave(path);
    }
    return !wasAskedFor;
  });
  countAfterProbe_ = items_.size();
}

}  // namespace filemanagers
