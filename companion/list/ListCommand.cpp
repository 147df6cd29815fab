#include "companion/PathText.h"
#include "companion/SharedDirectory.h"
#include "companion/list/ListCommands.h"
#include "companion/list/ListedPlace.h"
#include "companion/list/Manifest.h"

namespace companion {

using platform::Result;

ExitStatus listWorkingCopies(Output &output) {
  const Result<platform::FileURL> directory = sharedDirectoryURL();
  if (!directory) {
    printError(directory.reason());
    return exitFailed;
  }
  const Result<Manifest> manifest = Manifest::read(*directory);
  if (!manifest) {
    printError(manifest.reason());
    return exitFailed;
  }
  for (const platform::PropertyList &entry : manifest->entries()) {
    const ListedPlace place = placeOfEntry(entry);
    if (place.bestPath()) {
      output.writeLine(fieldOfPath(*place.bestPath()));
    }
    if (!place.currentPath) {
      const std::string *identifier = textInEntry(entry, "wcID");
      const std::string name = place.recordedPath      ? displayedPath(*place.recordedPath)
                               : identifier != nullptr ? "entry " + displayedPath(*identifier)
                                                       : "an entry without a name";
      printError(name + ": cannot be reached: " + place.reason);
    }
  }
  return exitDone;
}

}  // namespace companion
