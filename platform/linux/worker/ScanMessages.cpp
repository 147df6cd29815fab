#include "platform/linux/worker/ScanMessages.h"

#include <algorithm>

#include "platform/linux/GLibHandles.h"

using platform::VariantHandle;

namespace {

// Paths are bytes, so they cross as byte strings.
constexpr const char *requestType = "(ayayibbbb)";
constexpr const char *reportsType = "a(ayyy)";
constexpr const char *databaseType = "(ays)";
constexpr const char *beatType = "()";
constexpr const char *endType = "(is)";
constexpr const char *exitType = "(bi)";

// Bits of the third field of a report.
constexpr unsigned conflictedBit = 1;
constexpr unsigned lockedBit = 2;
constexpr unsigned switchedBit = 4;
constexpr unsigned allBits = conflictedBit | lockedBit | switchedBit;

// The top of every message is a variant, so that a message says itself which it is.
std::string serialized(GVariant *contents) {
  const VariantHandle message(g_variant_ref_sink(g_variant_new_variant(contents)));
  return {static_cast<const char *>(g_variant_get_data(message.get())),
          g_variant_get_size(message.get())};
}

VariantHandle deserialized(std::string_view bytes) {
  const platform::Handle<GBytes, g_bytes_unref> copy(g_bytes_new(bytes.data(), bytes.size()));
  const VariantHandle message(
      g_variant_ref_sink(g_variant_new_from_bytes(G_VARIANT_TYPE_VARIANT, copy.get(), FALSE)));
  return g_variant_is_normal_form(message.get()) != FALSE
             ? VariantHandle(g_variant_get_variant(message.get()))
             : nullptr;
}

bool isOfType(const VariantHandle &value, const char *type) {
  return g_variant_is_of_type(value.get(), G_VARIANT_TYPE(type)) != FALSE;
}

GVariant *reportsVariant(const ScanReports &reports) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE(reportsType));
  for (const ScanReport &report : reports) {
    const unsigned bits = (report.isConflicted ? conflictedBit : 0U) |
                          (report.isLocked ? lockedBit : 0U) |
                          (report.isSwitched ? switchedBit : 0U);
    g_variant_builder_add(&builder, "(@ayyy)", g_variant_new_bytestring(report.path.c_str()),
                          static_cast<guchar>(report.status), static_cast<guchar>(bits));
  }
  return g_variant_builder_end(&builder);
}

std::optional<ScanReports> reportsFrom(GVariant *value) {
  ScanReports reports;
  reports.reserve(g_variant_n_children(value));
  GVariantIter iterator;
  g_variant_iter_init(&iterator, value);
  const char *path = nullptr;
  guchar status = 0;
  guchar bits = 0;
  while (g_variant_iter_next(&iterator, "(^&ayyy)", &path, &status, &bits) != FALSE) {
    if (status < svn_wc_status_none || status > svn_wc_status_incomplete || (bits & ~allBits)) {
      return std::nullopt;
    }
    reports.push_back({path, static_cast<svn_wc_status_kind>(status), (bits & conflictedBit) != 0,
                       (bits & lockedBit) != 0, (bits & switchedBit) != 0});
  }
  return reports;
}

std::optional<svn_depth_t> depthFrom(gint32 number) {
  return number >= svn_depth_empty && number <= svn_depth_infinity
             ? std::optional(static_cast<svn_depth_t>(number))
             : std::nullopt;
}

GVariant *variantOf(const ScanReports &reports) {
  return reportsVariant(reports);
}

GVariant *variantOf(const ScanDatabase &database) {
  return g_variant_new("(@ays)", g_variant_new_bytestring(database.path.c_str()),
                       database.state.c_str());
}

GVariant *variantOf(const ScanBeat & /*beat*/) {
  return g_variant_new(beatType);
}

// What the library says may quote the database, at any length and whatever bytes are there.
std::string sendableText(const std::string &message) {
  const platform::StringHandle valid(g_utf8_make_valid(
      message.data(), static_cast<gssize>(std::min(message.size(), greatestScanErrorText))));
  std::string text = valid.get();
  // In place of a byte that is none of a text there are three.
  if (text.size() > greatestScanErrorText) {
    const char *const end = text.c_str() + greatestScanErrorText + 1;
    text.resize(static_cast<std::size_t>(g_utf8_find_prev_char(text.c_str(), end) - text.c_str()));
  }
  return text;
}

GVariant *variantOf(const ScanEnd &end) {
  return g_variant_new(endType, end.error, sendableText(end.message).c_str());
}

}  // namespace

std::string encode(const ScanRequest &request) {
  return serialized(g_variant_new("(@ay@ayibbbb)",
                                  g_variant_new_bytestring(request.targetPath.c_str()),
                                  g_variant_new_bytestring(request.configDir.value_or("").c_str()),
                                  static_cast<gint32>(request.options.depth),
                                  static_cast<gboolean>(request.options.contactsRepository),
                                  static_cast<gboolean>(request.options.reportsUnchanged),
                                  static_cast<gboolean>(request.options.reportsIgnored),
                                  static_cast<gboolean>(request.options.entersExternals)));
}

std::string encode(const ScanMessage &message) {
  return std::visit([](const auto &contents) { return serialized(variantOf(contents)); }, message);
}

std::string encode(const ScanExit &exit) {
  return serialized(g_variant_new(exitType, static_cast<gboolean>(exit.isSignal), exit.number));
}

std::optional<ScanRequest> decodeScanRequest(std::string_view bytes) {
  const VariantHandle value = deserialized(bytes);
  if (value == nullptr || !isOfType(value, requestType)) {
    return std::nullopt;
  }
  const char *target = nullptr;
  const char *configDir = nullptr;
  gint32 depthNumber = 0;
  gboolean contactsRepository = FALSE;
  gboolean reportsUnchanged = FALSE;
  gboolean reportsIgnored = FALSE;
  gboolean entersExternals = FALSE;
  g_variant_get(value.get(), "(^&ay^&ayibbbb)", &target, &configDir, &depthNumber,
                &contactsRepository, &reportsUnchanged, &reportsIgnored, &entersExternals);
  const std::optional<svn_depth_t> depth = depthFrom(depthNumber);
  if (!depth) {
    return std::nullopt;
  }
  ScanRequest request;
  request.targetPath = target;
  if (*configDir != '\0') {
    request.configDir = configDir;
  }
  request.options = {*depth, contactsRepository != FALSE, reportsUnchanged != FALSE,
                     reportsIgnored != FALSE, entersExternals != FALSE};
  return request;
}

std::optional<ScanMessage> decodeScanMessage(std::string_view bytes) {
  const VariantHandle value = deserialized(bytes);
  if (value == nullptr) {
    return std::nullopt;
  }
  if (isOfType(value, reportsType)) {
    return reportsFrom(value.get());
  }
  if (isOfType(value, databaseType)) {
    const char *path = nullptr;
    const char *state = nullptr;
    g_variant_get(value.get(), "(^&ay&s)", &path, &state);
    return ScanDatabase{path, state};
  }
  if (isOfType(value, beatType)) {
    return ScanBeat();
  }
  if (isOfType(value, endType)) {
    ScanEnd end;
    const char *message = nullptr;
    g_variant_get(value.get(), "(i&s)", &end.error, &message);
    end.message = message;
    return end.message.size() <= greatestScanErrorText ? std::optional<ScanMessage>(end)
                                                       : std::nullopt;
  }
  return std::nullopt;
}

std::optional<ScanExit> decodeScanExit(std::string_view bytes) {
  const VariantHandle value = deserialized(bytes);
  if (value == nullptr || !isOfType(value, exitType)) {
    return std::nullopt;
  }
  ScanExit exit;
  gboolean isSignal = FALSE;
  g_variant_get(value.get(), "(bi)", &isSignal, &exit.number);
  exit.isSignal = isSignal != FALSE;
  return exit;
}
