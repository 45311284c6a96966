// The file that a start leaves when its process ends within: who was busy then. One for each process, below the user's
// own folder of application data.
#pragma once

#include "core/baselib/Api.h"

#include <string>

namespace corvix {

enum class StartPhase : u32 {
  None,
  Loading,  // the module's code
  Factory,  // its class factory is asked for
  Object,   // the factory makes an object
  Told,     // one of its objects is told of the start
};

// Another one: another file.
struct FileStamp {
  u64 written = 0;
  u64 sizeBytes = 0;
  bool operator==(const FileStamp& other) const noexcept {
    return written == other.written && sizeBytes == other.sizeBytes;
  }
};
FileStamp stampOf(const std::wstring& path) noexcept;  // all zero for a file that is not there

namespace start_file {

constexpr u32 kMagic = 0x53587643;  // "CvXS"
constexpr u32 kLayout = 1;
constexpr u32 kSizeBytes = 16 * 1024;
constexpr wchar_t kSuffix[] = L".start";

// What is busy: where its name begins, and the phase in the bits above.
constexpr u32 kPhaseShift = 24;
constexpr u32 kNameMask = (1u << kPhaseShift) - 1;

struct Head {
  u32 magic;
  u32 layout;
  u64 begun;    // when the process began, as the system counts
  u32 process;  // its number
  u32 busy;     // 0: nobody
  u32 isTold;   // the user has been told of it
  u32 reserved;
};

// Of the program, right behind the head, and of modules. The units follow, without a zero.
struct Name {
  FileStamp stamp;
  u32 length;
};

// Where all programs of the user have theirs; empty if there is no such folder.
std::wstring folder();

}  // namespace start_file

}  // namespace corvix
