#include "shell/modules/Catalogue_p.h"

#include "core/baselib/system/ApplicationKey_p.h"
#include "core/baselib/system/FileWindow_p.h"
#include "core/baselib/system/PartFile_p.h"
#include "core/baselib/system/RegistryKey_p.h"
#include "core/baselib/system/UserData_p.h"
#include "core/baselib/text/StringHash.h"
#include "shell/ModuleCatalogue.h"
#include "shell/modules/Contract_p.h"

#include <algorithm>
#include <cstring>

namespace corvix {

namespace {

constexpr u32 kLargestFile = 256 * 1024 * 1024;
constexpr wchar_t kSwitch[] = L"ModuleCatalogue";

// A file may change once more without another time, as long as its clock has not gone on: what was that young when the
// catalogue was written is read again.
constexpr u64 kYoung = u64{2} * 10'000'000;  // in units of 100 ns

// A catalogue is a Head, the folder's path, and for each module a Record, its name and its descriptor; each of
// these begins at a multiple of eight bytes.
struct Head {
  char mark[8];
  u64 check;  // of all that follows
  u64 writtenAt;
  u32 folderUnits;
  u32 count;
};
struct Record {
  DirectoryStamp stamp;
  u32 nameUnits;
  u32 descriptorBytes;
};
constexpr char kMark[8] = {'C', 'V', 'X', 'M', 'O', 'D', '0', '2'};
constexpr u64 kChecked = offsetof(Head, writtenAt);

constexpr u64 padded(u64 size) noexcept { return (size + 7) & ~u64{7}; }
constexpr std::size_t bytesOf(std::wstring_view text) noexcept { return text.size() * sizeof(wchar_t); }

// Takes one piece behind the other out of a block, none that is not whole.
class Reader {
 public:
  Reader(const unsigned char* block, u64 size) noexcept : at_(block), left_(size) {}

  const unsigned char* take(u64 size) noexcept {
    if (padded(size) > left_) return nullptr;
    left_ -= padded(size);
    return std::exchange(at_, at_ + padded(size));
  }

  bool take(std::wstring_view& text, u32 units) noexcept {
    const unsigned char* const from = take(u64{units} * sizeof(wchar_t));
    if (from) text = {reinterpret_cast<const wchar_t*>(from), units};
    return from != nullptr;
  }

 private:
  const unsigned char* at_;
  u64 left_;
};

// Writes one piece behind the other through a window, and never goes back.
class Writer {
 public:
  explicit Writer(unsigned char* to) noexcept : to_(to) {}
  void put(const void* from, std::size_t size) noexcept {
    if (size) std::memcpy(to_, from, size);
    const std::size_t whole = static_cast<std::size_t>(padded(size));
    std::memset(to_ + size, 0, whole - size);
    to_ += whole;
  }

 private:
  unsigned char* to_;
};

void replaceFile(const std::wstring& path, const void* bytes, u32 size) {
  PartFile part(path.c_str());
  if (!part) return;
  DWORD written = 0;
  {
    const FileHandle file = openFile(part.path(), file_mode::kWrite);
    if (!file || !WriteFile(file.get(), bytes, size, &written, nullptr)) written = 0;
  }
  if (written == size) part.takePlace();
}

}  // namespace

// Damage shows in it; nobody who wants to deceive is kept from it. Four sums at a time: none waits for the one before,
// and each step can be undone, so that no change of a word is lost.
u64 catalogueCheck(const unsigned char* bytes, u64 size) noexcept {
  constexpr u32 kSums = 4;
  u32 sums[kSums] = {0x9E3779B9, 0x7F4A7C15, 0xD6E8FEB8, 0x6659FD93};
  const auto add = [](u32& sum, const unsigned char* from) {
    u32 word;
    std::memcpy(&word, from, sizeof word);
    sum = (sum ^ word) * 0x85EBCA6B;
    sum ^= sum >> 15;
  };
  constexpr u64 kStep = u64{kSums} * sizeof(u32);
  u64 at = 0;
  for (; at + kStep <= size; at += kStep) {
    for (u32 i = 0; i < kSums; ++i) add(sums[i], bytes + at + i * sizeof(u32));
  }
  for (u32 i = 0; at + sizeof(u32) <= size; at += sizeof(u32), ++i) add(sums[i], bytes + at);
  return (u64{sums[0]} << 32 | sums[1]) ^ (u64{sums[2]} << 32 | sums[3]) * 0xD6E8FEB86659FD93;
}

u64 Catalogue::systemTime() noexcept {
  FILETIME time;
  GetSystemTimeAsFileTime(&time);
  return u64{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

DescriptorView Catalogue::descriptorOf(const FolderFile& file) {
  if (!std::exchange(isLoaded_, true)) load();
  if (const Entry* const entry = known(file)) {
    ++takenCount_;
    return entry->descriptor.empty() ? noDescriptor() : DescriptorView{entry->descriptor};
  }
  ++readCount_;
  const DescriptorBytes& descriptor = read_.emplace_front(readDescriptorResource(folder_ + L"\\" + file.name));
  // Why a file is no module may change with the system, or with who else uses it.
  if (file.stamp.identity && !path_.empty() && (!descriptor.bytes.empty() || descriptor.isNoPlugin))
    fresh_.push_back({file.stamp, file.name, descriptor.bytes});
  return {descriptor.bytes, descriptor.reason.c_str(), descriptor.isNoPlugin};
}

const Catalogue::Entry* Catalogue::known(const FolderFile& file) noexcept {
  while (next_ < entries_.size() && entries_[next_].name != file.name && standsBefore(entries_[next_].name, file.name))
    ++next_;
  if (next_ == entries_.size() || !file.stamp.identity) return nullptr;
  const Entry& entry = entries_[next_];
  return entry.name == file.name && entry.stamp == file.stamp ? &entry : nullptr;
}

void Catalogue::load() {
  FileWindow file;
  if (path_.empty() || file.open(path_.c_str()) != 0) return;
  const u64 size = file.size();
  if (size < sizeof(Head) || size > kLargestFile || !block_.tryAllocate(static_cast<std::size_t>(size)) ||
      !file.read(0, block_.get(), static_cast<u32>(size)))
    return;
  Reader reader(block_.get(), size);
  Head head;
  std::memcpy(&head, reader.take(sizeof head), sizeof head);
  std::wstring_view folder;
  if (std::memcmp(head.mark, kMark, sizeof kMark) != 0 || size != padded(size) ||
      head.check != catalogueCheck(block_.get() + kChecked, size - kChecked) ||
      !reader.take(folder, head.folderUnits) || folder != folder_)
    return;
  entries_.reserve(std::min(head.count, static_cast<u32>(size / sizeof(Record))));
  for (u32 i = 0; i < head.count; ++i) {
    Record record;
    Entry entry;
    const unsigned char* const from = reader.take(sizeof record);
    if (!from) break;
    std::memcpy(&record, from, sizeof record);
    if (!reader.take(entry.name, record.nameUnits)) break;
    const unsigned char* const descriptor = reader.take(record.descriptorBytes);
    if (!descriptor) break;
    entry.stamp = record.stamp;
    entry.descriptor = {descriptor, record.descriptorBytes};
    if (std::max(entry.stamp.written, entry.stamp.changed) + kYoung < head.writtenAt) entries_.push_back(entry);
  }
}

void Catalogue::save(u64 time) noexcept {
  if (fresh_.empty()) return;
  try {
    write(time);
  } catch (const std::bad_alloc&) {  // the next start is slower
  }
}

void Catalogue::write(u64 time) {
  std::vector<Entry> kept;
  u64 size = sizeof(Head) + padded(bytesOf(folder_));
  const auto keep = [&](const Entry& entry) {
    const u64 more = sizeof(Record) + padded(bytesOf(entry.name)) + padded(entry.descriptor.size());
    if (more > kLargestFile - size) return;
    size += more;
    kept.push_back(entry);
  };
  next_ = 0;
  auto fresh = fresh_.begin();
  for (const FolderFile& file : files_) {
    if (fresh != fresh_.end() && fresh->name.data() == file.name.data()) {
      keep(*fresh++);
    } else if (const Entry* const entry = known(file)) {
      keep(*entry);
    }
  }

  HeapBuffer<unsigned char> block;
  block.allocate(static_cast<std::size_t>(size));
  Head head{{}, 0, time, static_cast<u32>(folder_.size()), static_cast<u32>(kept.size())};
  std::memcpy(head.mark, kMark, sizeof kMark);
  Writer writer(block.get());
  writer.put(&head, sizeof head);
  writer.put(folder_.data(), bytesOf(folder_));
  for (const Entry& entry : kept) {
    const Record record{entry.stamp, static_cast<u32>(entry.name.size()), static_cast<u32>(entry.descriptor.size())};
    writer.put(&record, sizeof record);
    writer.put(entry.name.data(), bytesOf(entry.name));
    writer.put(entry.descriptor.data(), entry.descriptor.size());
  }
  head.check = catalogueCheck(block.get() + kChecked, size - kChecked);
  std::memcpy(block.get(), &head, sizeof head);
  makeFolders(folderOf(path_));
  replaceFile(path_, block.get(), static_cast<u32>(size));
}

std::wstring cataloguePathOf(const std::wstring& folder) {
  if (!isCatalogueSwitchedOn()) return {};
  std::wstring data = userDataFolder();
  if (data.empty()) return data;
  wchar_t name[16];
  wsprintfW(name, L"%08X", text::stringHash(folder.data(), folder.size()));
  // Programs of the other word size may look into the same folder: what is a module to them is none to us.
  return data + L"\\Catalogues\\" + name + (kOwnMachine == kMachineX86 ? L".modules" : L".x64.modules");
}

bool isCatalogueSwitchedOn() {
  return RegistryKey::open(HKEY_CURRENT_USER, applicationKeyPath(), KEY_QUERY_VALUE).number(kSwitch).value_or(1) != 0;
}

bool switchCatalogue(bool on) {
  const RegistryKey key = RegistryKey::create(HKEY_CURRENT_USER, applicationKeyPath(), KEY_SET_VALUE);
  return key && key.setNumber(kSwitch, on ? 1 : 0);
}

}  // namespace corvix
