// Asking the application for fresh bookmarks of the working copies that cannot be reached.
#include "registry/KTRFinderSyncWorkingCopies.h"

void KTRFinderSyncWorkingCopies::p_requestRecoveryForWorkingCopies(
    const GenerationsByIdentifier &workingCopies) {
  p_log().write(platform::LogLevel::standard,
                "Asking the app for fresh bookmarks for {} working copies",
                {platform::publicArgument(std::to_string(workingCopies.size()))});

  // The file, the record and the notification follow each other in this order: whoever hears the
  // notification finds the file complete.
  const std::optional<platform::FileURL> directory = p_groupDirectoryURL();
  if (directory) {
    p_addToRecoveryRequest(workingCopies, *directory);
  }
  {
    platform::LockGuard guard(i_stateLock);
    for (const auto &[identifier, generation] : workingCopies) {
      i_lastRequestedGenerations.insert_or_assign(identifier, generation);
    }
  }
  if (directory) {
    i_services.notificationCenter.postNotification("com.morvane.finderSync.needBookmarks");
  }
}

void KTRFinderSyncWorkingCopies::p_addToRecoveryRequest(
    const GenerationsByIdentifier &workingCopies, const platform::FileURL &directory) {
  i_services.fileManager.createDirectoryWithIntermediates(directory);
  const platform::FileURL file = directory.appendingPathComponent("RecoveryRequest.plist");
  const platform::Result<platform::Dictionary> earlier =
      i_services.propertyListFiles.dictionaryWithContentsOfURL(file);
  platform::Dictionary request = earlier ? *earlier : platform::Dictionary();
  for (const auto &[identifier, generation] : workingCopies) {
    request.insert_or_assign(identifier, generation.number());
  }
  i_services.propertyListFiles.writeDictionary(request, file);
}
