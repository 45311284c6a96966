// Files by UTF-8 names. Failures are thrown as std::runtime_error with a message that names the file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace corvix::xmlbinc {

/// At most `limit` + 1 bytes, so that the caller sees that a file is too large without holding it.
std::string readFile(const std::string& path, std::size_t limit);

/// The file appears whole or not at all: it is written beside its place under another name and then renamed.
void writeFile(const std::string& path, std::string_view bytes);

/// Takes an earlier run's block or resource file away, so that no build goes on with it; any other file stays.
void removeStaleBlock(const std::string& path);

bool sameFile(const std::string& a, const std::string& b);

}  // namespace corvix::xmlbinc
