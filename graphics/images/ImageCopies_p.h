// ImageCopies: what was made of frozen images for drawing: converted, made smaller. Bounded, those used last, and given
// up when memory is short. [any thread]
#pragma once

#include "core/baselib/memory/Hibernatable.h"
#include "core/baselib/system/CriticalSection.h"
#include "graphics/images/ImageBits_p.h"
#include "graphics/quality/Quality_p.h"

#include <list>
#include <memory>
#include <unordered_map>

namespace corvix {

class ImageCopies final : public BHibernatable {
  CORVIX_IDENTITY(ImageCopies, 0x71B80E3D, 0x4C25F96A, 0x8D4037E1, 0x1F9A62C5, BHibernatable)

 public:
  static constexpr std::size_t kMostBytes = 64u << 20;

  // A copy of all that a view shows; `make(box)` makes one of a part of it. The first time only the part that is seen
  // is made, and not kept, unless that is all. Throws std::bad_alloc.
  template <class Make>
  ImageBits of(const ImageView& view, const PixelBox& seen, i32 width, i32 height, i32 step, Make make) {
    const Key key = {view, width, height, step, quality().cmykMode()};
    Copy copy = find(key);
    if (!copy) {
      const PixelBox all = wholeOf(view);
      const bool isAll = seen.left == 0 && seen.top == 0 && seen.right == all.right && seen.bottom == all.bottom;
      const i64 bytes = i64{4} * width * height;
      if (bytes > i64{kMostBytes / 2} || (!isAll && !wasAskedFor(key))) return make(seen);
      copy = add(key, make(all));
    }
    return partOf(std::move(copy), view, seen);
  }

  void drop(u32 image) noexcept;

  bool hibernate(bool argument) override;
  std::size_t sizeBytes() const noexcept { return sizeBytes_; }

 private:
  using Copy = std::shared_ptr<const ImageBits>;
  struct Key {
    ImageView view;
    i32 width;
    i32 height;
    i32 step;
    CmykMode mode;
  };
  struct Entry {
    Key key;
    Copy copy;  // null: asked for, but not made yet
  };
  using Entries = std::list<Entry>;

  static bool isSame(const Key& a, const Key& b) noexcept;
  static std::size_t bytesOf(const Entry& entry) noexcept;
  static ImageBits partOf(Copy copy, const ImageView& view, const PixelBox& seen);
  Entries::iterator* place(const Key& key) noexcept;
  Copy find(const Key& key) noexcept;
  bool wasAskedFor(const Key& key);
  Copy add(const Key& key, ImageBits bits);
  void keep(Entry entry);
  void forget(Entries::iterator entry) noexcept;

  SCriticalSection lock_;
  Entries entries_;  // those used last first
  std::unordered_multimap<u32, Entries::iterator> byImage_;
  std::size_t sizeBytes_ = 0;
};

// The one of the process. Throws std::bad_alloc.
ImageCopies& imageCopies();

// Of an image that goes or thaws.
void dropImageCopies(u32 image) noexcept;

}  // namespace corvix
