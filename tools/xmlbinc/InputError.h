// Everything that is wrong with an input is thrown as an InputError; whoever knows which input it was turns the
// offset into a position for people.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace corvix::xmlbinc {

class InputError : public std::runtime_error {
 public:
  InputError(std::size_t offset, const std::string& message) : std::runtime_error(message), offset_(offset) {}

  /// In bytes: into the decoded text for XML, into the file for a block.
  std::size_t offset() const { return offset_; }

 private:
  std::size_t offset_;
};

}  // namespace corvix::xmlbinc
