#include "graphics/images/ImageCopies_p.h"

#include <algorithm>
#include <atomic>

namespace corvix {

namespace {

constexpr std::size_t kEntryBytes = 256;  // what an entry costs besides its pixels

constinit std::atomic<ImageCopies*> made = nullptr;

}  // namespace

// The pixels of a frozen image stay where they are: the address tells the part.
bool ImageCopies::isSame(const Key& a, const Key& b) noexcept {
  return a.view.rows == b.view.rows && a.view.firstPixel == b.view.firstPixel && a.view.width == b.view.width &&
         a.view.height == b.view.height && a.view.ink == b.view.ink && a.width == b.width && a.height == b.height &&
         a.step == b.step && (a.mode == b.mode || a.view.model != ColorModel::Cmyk);
}

std::size_t ImageCopies::bytesOf(const Entry& entry) noexcept {
  return kEntryBytes +
         (entry.copy ? static_cast<std::size_t>(entry.copy->strideBytes) * static_cast<u32>(entry.copy->height) : 0);
}

// Pixels of the copy that show something of what is seen.
ImageBits ImageCopies::partOf(Copy copy, const ImageView& view, const PixelBox& seen) {
  ImageBits part;
  part.width = copy->width;
  part.height = copy->height;
  part.bitsPerPixel = copy->bitsPerPixel;
  part.strideBytes = copy->strideBytes;
  part.pixels = copy->pixels;
  part.hasAlpha = copy->hasAlpha;
  const auto down = [](i32 place, i32 from, i32 to) { return static_cast<i32>(i64{place} * to / from); };
  const auto up = [](i32 place, i32 from, i32 to) { return static_cast<i32>((i64{place} * to + from - 1) / from); };
  part.seen = {down(seen.left, view.width, part.width), down(seen.top, view.height, part.height),
               up(seen.right, view.width, part.width), up(seen.bottom, view.height, part.height)};
  part.kept = std::move(copy);
  return part;
}

ImageCopies::Entries::iterator* ImageCopies::place(const Key& key) noexcept {
  const auto [first, end] = byImage_.equal_range(key.view.finished);
  const auto found = std::find_if(first, end, [&key](const auto& row) { return isSame(row.second->key, key); });
  return found == end ? nullptr : &found->second;
}

ImageCopies::Copy ImageCopies::find(const Key& key) noexcept {
  const SCriticalSection::Lock lock(lock_);
  Entries::iterator* const found = place(key);
  if (!found || !(*found)->copy) return {};
  entries_.splice(entries_.begin(), entries_, *found);
  return entries_.front().copy;
}

bool ImageCopies::wasAskedFor(const Key& key) {
  const SCriticalSection::Lock lock(lock_);
  if (place(key)) return true;
  keep({key, {}});
  return false;
}

ImageCopies::Copy ImageCopies::add(const Key& key, ImageBits bits) {
  Copy copy = std::make_shared<const ImageBits>(std::move(bits));
  const SCriticalSection::Lock lock(lock_);
  if (Entries::iterator* const asked = place(key)) forget(*asked);
  keep({key, copy});
  return copy;
}

void ImageCopies::keep(Entry entry) {
  const std::size_t bytes = bytesOf(entry);
  while (!entries_.empty() && sizeBytes_ + bytes > kMostBytes) forget(std::prev(entries_.end()));
  const u32 image = entry.key.view.finished;
  Entries one;
  one.push_back(std::move(entry));
  byImage_.emplace(image, one.begin());
  entries_.splice(entries_.begin(), one);
  sizeBytes_ += bytes;
}

void ImageCopies::forget(Entries::iterator entry) noexcept {
  const auto [first, end] = byImage_.equal_range(entry->key.view.finished);
  byImage_.erase(std::find_if(first, end, [&entry](const auto& row) { return row.second == entry; }));
  sizeBytes_ -= bytesOf(*entry);
  entries_.erase(entry);
}

void ImageCopies::drop(u32 image) noexcept {
  const SCriticalSection::Lock lock(lock_);
  for (auto row = byImage_.find(image); row != byImage_.end(); row = byImage_.find(image)) forget(row->second);
}

// Who holds the lock may be waiting for the memory manager's, which the caller has.
bool ImageCopies::hibernate(bool) {
  if (!lock_.tryEnter()) return false;
  const bool hadAny = !entries_.empty();
  byImage_.clear();
  entries_.clear();
  sizeBytes_ = 0;
  lock_.leave();
  return hadAny;
}

ImageCopies& imageCopies() {
  static ImageCopies* const copies = made = new ImageCopies;
  return *copies;
}

void dropImageCopies(u32 image) noexcept {
  if (ImageCopies* const copies = made) copies->drop(image);
}

}  // namespace corvix
