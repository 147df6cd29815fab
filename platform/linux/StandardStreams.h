#pragma once

namespace platform {

// Must come before the first file is opened. A reader that goes away becomes a write error, and a
// standard stream that the caller closed is not mistaken for a file that is opened later. Ends the
// process if even that is not possible.
void prepareStandardStreams();

}  // namespace platform
