// What a module file says of itself, without running it. Trusts nothing in the file.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

struct _IMAGE_FILE_HEADER;

namespace corvix::tool {

class ModuleImage {
 public:
  struct Import {
    std::string module;
    std::vector<std::string> functions;  // those by name
  };

  // Why it is no module that this program could load, as a rule's id and what was found; nothing when it is one. One of
  // the other word size is read all the same.
  struct Fault {
    const char* rule;
    std::string detail;
  };

  // False when the file cannot be read.
  bool open(const std::wstring& path);

  const std::optional<Fault>& fault() const { return fault_; }
  bool isForX86() const { return isForX86_; }  // of either word size

  const std::vector<Import>& imports() const { return imports_; }
  const std::set<std::string>& exports() const { return exports_; }
  const std::optional<std::string>& descriptor() const { return descriptor_; }
  bool hasVersionInformation() const { return hasVersion_; }
  const std::string& buildIdentifier() const { return buildIdentifier_; }  // empty if there is none
  bool hasSymbols() const { return hasSymbols_; }

  // Whether the bytes stand anywhere in the code and data; resources do not count.
  bool contains(std::string_view bytes) const;
  // Likewise the zero-terminated UTF-16 texts of letters, digits and dots that look like names.
  std::vector<std::u16string> names() const;

 private:
  using FileHeader = _IMAGE_FILE_HEADER;
  struct Section {
    std::uint32_t address, size, offset;
    bool isResources;
  };

  std::optional<Fault> examine();
  template <class OptionalHeader>
  std::optional<Fault> readHeaders(std::uint64_t optionalAt, const FileHeader& file);
  template <class Word>
  void readImports(std::uint32_t table);
  void readExports(std::uint32_t table);
  void readDebug(std::uint32_t table, std::uint32_t size);
  std::optional<std::string> findResource(std::uint32_t table, std::u16string_view type, std::uint32_t typeNumber,
                                          std::u16string_view name) const;
  std::optional<std::uint32_t> findEntry(std::uint32_t table, std::uint32_t directory, std::u16string_view name,
                                         std::uint32_t number) const;

  template <class T>
  bool readFile(std::uint64_t offset, T& value) const;
  template <class T>
  bool readImage(std::uint64_t address, T& value) const;
  std::string_view imageAt(std::uint64_t address) const;  // up to its section's end; empty outside
  std::string nameAt(std::uint32_t address);
  bool hasRoom() const noexcept;

  std::optional<Fault> fault_;
  std::string bytes_;
  std::vector<Section> sections_;
  std::size_t nameBytes_ = 0;
  std::vector<Import> imports_;
  std::set<std::string> exports_;
  std::optional<std::string> descriptor_;
  std::string buildIdentifier_;
  bool isForX86_ = false;
  bool hasVersion_ = false;
  bool hasSymbols_ = false;
};

}  // namespace corvix::tool
