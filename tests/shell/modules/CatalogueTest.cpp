// Whatever became of a folder or of its catalogue, each module's descriptor is the one in its file.
#include "shell/modules/Catalogue_p.h"

#include "shell/ModuleCatalogue.h"
#include "tests/support/OwnFolder.h"
#include "tests/support/OwnRegistry.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <thread>

#include <gtest/gtest.h>

namespace corvix {
namespace {

namespace fs = std::filesystem;
using testing_support::bytesOf;
using testing_support::OwnFolder;

constexpr u64 kLater = 60 * 10'000'000ull;

fs::path built() { return fs::path(modulePath(nullptr)).parent_path(); }

void write(const fs::path& path, const std::string& bytes) { std::ofstream(path, std::ios::binary) << bytes; }

// Two plug-ins, a library that is none and a file that is nothing, with a catalogue beside them.
class CatalogueTest : public testing::Test {
 protected:
  CatalogueTest() {
    fs::create_directory(modules_);
    fs::copy(built() / "plugins" / "greeter.dll", modules_ / "a.dll");
    fs::copy(built() / "plugins" / "textstats.dll", modules_ / "b.dll");
    fs::copy(built() / "libwinpthread-1.dll", modules_ / "c.dll");
    write(modules_ / "d.dll", "nothing");
  }

  struct Looked {
    int taken;
    int read;
  };

  // Goes through the folder as it is and keeps the catalogue as if a minute later; whatever comes is right.
  Looked look(u64 later = kLater) {
    const std::wstring folder = modules_.wstring();
    const std::vector<FolderFile> files = modulesOf(folder);
    Catalogue catalogue(folder, files, path_.wstring());
    for (const FolderFile& file : files) {
      SCOPED_TRACE(testing::PrintToString(file.name));
      const DescriptorView seen = catalogue.descriptorOf(file);
      const DescriptorBytes right = readDescriptorResource(folder + L"\\" + file.name);
      EXPECT_TRUE(std::equal(seen.bytes.begin(), seen.bytes.end(), right.bytes.begin(), right.bytes.end()));
      EXPECT_EQ(seen.reason, right.reason);
      EXPECT_EQ(seen.isNoPlugin, right.isNoPlugin);
    }
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    catalogue.save((u64{now.dwHighDateTime} << 32 | now.dwLowDateTime) + later);
    return {catalogue.takenCount(), catalogue.readCount()};
  }

  OwnFolder folder_;
  fs::path modules_ = folder_.file(L"modules");
  fs::path path_ = folder_.file(L"local") / "data" / "here.modules";
};

#define EXPECT_LOOKED(taken_, read_) \
  do {                               \
    const Looked seen = look();      \
    EXPECT_EQ(seen.taken, taken_);   \
    EXPECT_EQ(seen.read, read_);     \
  } while (false)

TEST_F(CatalogueTest, OnlyFilesThatChangedAreRead) {
  fs::create_directory(path_.parent_path().parent_path());
  EXPECT_LOOKED(0, 4);
  EXPECT_LOOKED(3, 1);  // what is no module is looked at again

  const struct {
    const char* what;
    void (*change)(const fs::path&);
    int taken, read;
  } rows[] = {
      {"written again", [](const fs::path& in) { write(in / "a.dll", bytesOf(in / "a.dll")); }, 2, 2},
      {"another size", [](const fs::path& in) { write(in / "a.dll", bytesOf(in / "a.dll") + "x"); }, 2, 2},
      {"another file with size and time of the one before",
       [](const fs::path& in) {
         const auto time = fs::last_write_time(in / "b.dll");
         const std::vector<unsigned char> descriptor = readDescriptorResource((in / "b.dll").wstring()).bytes;
         std::string other = bytesOf(in / "b.dll");
         other[other.find(std::string(descriptor.begin(), descriptor.end())) + descriptor.size() - 1] ^= 1;
         write(in / "new", other);
         fs::last_write_time(in / "new", time);
         fs::rename(in / "new", in / "b.dll");
       },
       2, 2},
      {"only the time", [](const fs::path& in) { fs::last_write_time(in / "a.dll", fs::file_time_type::clock::now()); },
       2, 2},
      {"one more in front", [](const fs::path& in) { fs::copy(in / "a.dll", in / "0.dll"); }, 3, 2},
      {"one gone", [](const fs::path& in) { fs::remove(in / "0.dll"); }, 3, 1},
      {"two that changed places",
       [](const fs::path& in) {
         fs::rename(in / "a.dll", in / "x");
         fs::rename(in / "b.dll", in / "a.dll");
         fs::rename(in / "x", in / "b.dll");
       },
       1, 3},
      {"no longer a plug-in", [](const fs::path& in) { write(in / "b.dll", bytesOf(in / "c.dll")); }, 2, 2},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    row.change(modules_);
    EXPECT_LOOKED(row.taken, row.read);
    EXPECT_LOOKED(3 + (std::strcmp(row.what, "one more in front") == 0), 1);
  }
}

TEST(ModuleFolder, OrderIsTheFileSystems) {
  const std::wstring_view names[] = {L"a.dll",   L"A",       L"a_",      L"aZ",         L"B.dll", L"_",
                                     L"\u00E4b", L"\u00C4a", L"a\u00E9", L"A\u00C9z",   L"s",     L"\u017F",
                                     L"i",       L"\u0131",  L"",        L"\U0001F600", L"\uE000"};
  for (const std::wstring_view a : names) {
    for (const std::wstring_view b : names) {
      const int order =
          CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE);
      EXPECT_EQ(standsBefore(a, b), order == CSTR_LESS_THAN) << testing::PrintToString(a) << testing::PrintToString(b);
    }
  }
}

TEST_F(CatalogueTest, WhatWasYoungIsReadAgain) {
  fs::create_directories(path_.parent_path());
  look(0);
  EXPECT_EQ(look(0).read, 4);
}

// Nothing but time is lost.
TEST_F(CatalogueTest, WhateverLiesInItsPlace) {
  fs::create_directories(path_.parent_path());
  look();
  const std::string good = bytesOf(path_);
  const auto damage = [&](const std::string& bytes, int taken) {
    write(path_, bytes);
    EXPECT_LOOKED(taken, 4 - taken);
  };
  damage(good, 3);
  for (std::size_t at = 0; at < good.size(); at += at < 64 ? 3 : 101) {
    SCOPED_TRACE(at);
    std::string bytes = good;
    bytes[at] ^= 0x10;
    damage(bytes, 0);
    damage(good.substr(0, at), 0);
  }
  damage(good + "surplus.", 0);
  const fs::path elsewhere = folder_.file(L"elsewhere");
  fs::rename(modules_, elsewhere);
  modules_ = elsewhere;
  damage(good, 0);

  fs::remove(path_);
  fs::create_directory(path_);  // can be neither read nor written
  EXPECT_LOOKED(0, 4);
  EXPECT_LOOKED(0, 4);
  EXPECT_EQ(std::distance(fs::directory_iterator(path_.parent_path()), fs::directory_iterator()), 1);
}

// Whoever can write there may lie about what modules declare, but breaks nothing.
TEST_F(CatalogueTest, AForgedOneIsReadWithinItsBounds) {
  fs::create_directories(path_.parent_path());
  look();
  const std::string good = bytesOf(path_);
  const std::wstring folder = modules_.wstring();
  const std::vector<FolderFile> files = modulesOf(folder);
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    std::string bytes = good.substr(0, good.size() - (round % 3 ? 0 : random() % good.size() / 8 * 8));
    for (int i = 0; i < 4 && bytes.size() > 24; ++i)
      bytes[16 + random() % std::min<std::size_t>(bytes.size() - 16, 300)] = static_cast<char>(random());
    if (bytes.size() >= 16) {
      const u64 check = catalogueCheck(reinterpret_cast<const unsigned char*>(bytes.data()) + 16, bytes.size() - 16);
      std::memcpy(bytes.data() + 8, &check, sizeof check);
    }
    write(path_, bytes);
    Catalogue catalogue(folder, files, path_.wstring());
    u32 sum = 0;
    for (const FolderFile& file : files) {
      for (const unsigned char byte : catalogue.descriptorOf(file).bytes) sum += byte;
    }
    EXPECT_EQ(catalogue.takenCount() + catalogue.readCount(), 4) << sum;
  }
}

TEST_F(CatalogueTest, TwoProgramsAtOnce) {
  fs::create_directories(path_.parent_path());
  const auto program = [this] {
    for (int i = 0; i < 60; ++i) {
      look(i % 3 ? kLater : 0);
      std::error_code ignored;
      if (i % 7 == 0) fs::remove(path_, ignored);
    }
  };
  std::thread other(program);
  program();
  other.join();
}

TEST_F(CatalogueTest, CanBeSwitchedOff) {
  const testing_support::OwnRegistry registry;
  EXPECT_TRUE(isCatalogueSwitchedOn());
  EXPECT_TRUE(switchCatalogue(false));
  EXPECT_FALSE(isCatalogueSwitchedOn());
  EXPECT_EQ(cataloguePathOf(L"C:\\plugins"), L"");
  EXPECT_TRUE(switchCatalogue(true));
  EXPECT_NE(cataloguePathOf(L"C:\\plugins"), cataloguePathOf(L"C:\\other"));
  EXPECT_EQ(cataloguePathOf(L"C:\\plugins").ends_with(L".x64.modules"), sizeof(void*) == 8)
      << "each word size has its own";
  path_.clear();
  EXPECT_LOOKED(0, 4);
  EXPECT_LOOKED(0, 4);
}

}  // namespace
}  // namespace corvix
