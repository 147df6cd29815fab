// What the program says: results on standard output, all else on standard error.
#pragma once

#include <string>
#include <string_view>

namespace companion {

// Standard output, written in large pieces. After an error it swallows what is left; `finish` is
// where that shows.
class Output {
 public:
  Output() = default;
  Output(const Output &) = delete;
  Output &operator=(const Output &) = delete;

  void write(std::string_view text);
  void writeLine(std::string_view line);

  // Writes what is still held back. False if anything of all that was written got lost.
  bool flush();

  // From now on a reader that goes away has seen enough: what it does not read is not lost.
  void letReaderGo() { mayReaderGo_ = true; }

  // From now on a reader that does not read is waited for only until the descriptor is readable.
  // What it does not read then is not lost either.
  void letInterrupt(int descriptor) { interruption_ = descriptor; }

  // The same at the end of the program, with the reason on standard error.
  bool finish();

 private:
  std::string held_;
  bool mayReaderGo_ = false;
  int interruption_ = -1;
  int error_ = 0;  // the first error number
};

// One line on standard error that begins with the program's name.
void printError(std::string_view message);

}  // namespace companion
