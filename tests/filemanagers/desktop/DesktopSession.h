// A desktop session on a display of its own: the extension's private session, a window manager, and
// what tells a test what is shown.
#pragma once

#include <memory>
#include <string>

#include "tests/filemanagers/desktop/AccessibleObject.h"
#include "tests/filemanagers/desktop/VirtualDisplay.h"
#include "tests/support/processes/LaunchedPrograms.h"
#include "tests/support/session/ExtensionSession.h"

class DesktopSession {
 public:
  explicit DesktopSession(ExtensionSession::Setup setup = {});

  // Ends every program that was started in it, whoever started it.
  ~DesktopSession();
  DesktopSession(const DesktopSession &) = delete;
  DesktopSession &operator=(const DesktopSession &) = delete;

  ExtensionSession &extension() { return *extension_; }
  const ExtensionSession &extension() const { return *extension_; }
  VirtualDisplay &display() { return *display_; }
  const VirtualDisplay &display() const { return *display_; }

  // For the programs of the session.
  CommandOptions environment() const;

  // On which programs tell what they show.
  GDBusConnection *accessibilityBus() const { return accessibilityBus_.get(); }

  // The programs of the session that show something, beneath one object.
  AccessibleObject accessiblePrograms() const;

 private:
  // First, since it takes in what the others leave behind.
  LaunchedPrograms leftOver_;
  std::unique_ptr<ExtensionSession> extension_;
  std::unique_ptr<VirtualDisplay> display_;
  std::unique_ptr<QuietProgram> accessibility_;
  platform::ObjectHandle<GDBusConnection> accessibilityBus_;
};
