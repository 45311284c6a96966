#include "shell/modules/Contract_p.h"

#include <algorithm>

namespace corvix {

namespace {

constexpr std::wstring_view kOwnCompiler = L"gnu";  // GCC and clang share one contract
constexpr std::wstring_view kOwnBits = kOwnMachine == kMachineX86 ? L"32" : L"64";

std::wstring ownVersion() {
  constexpr std::string_view kText = CORVIX_VERSION;
  return {kText.begin(), kText.end()};
}

std::wstring machineName(u16 machine) {
  constexpr struct {
    u16 machine;
    const wchar_t* name;
  } kMachines[] = {{kMachineX86, L"32-bit x86"}, {kMachineX64, L"64-bit x86"}, {0xAA64, L"64-bit ARM"}};
  for (const auto& row : kMachines) {
    if (row.machine == machine) return row.name;
  }
  constexpr std::wstring_view kDigits = L"0123456789ABCDEF";
  std::wstring number = L"machine 0x0000";
  for (std::size_t at = number.size(); machine; machine = static_cast<u16>(machine >> 4))
    number[--at] = kDigits[machine & 15];
  return number;
}

// The digits in front of the next dot, without zeros before them.
std::wstring_view takeNumber(std::wstring_view& rest) noexcept {
  const std::size_t dot = std::min(rest.find(L'.'), rest.size());
  std::wstring_view number = rest.substr(0, dot);
  rest.remove_prefix(std::min(dot + 1, rest.size()));
  number = number.substr(0, number.find_first_not_of(L"0123456789"));
  number.remove_prefix(std::min(number.find_first_not_of(L'0'), number.size()));
  return number;
}

int compareNumbers(std::wstring_view a, std::wstring_view b) noexcept {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return a.compare(b);
}

// While the first number is 0, the second says what fits.
bool isOwnContract(std::wstring_view version) {
  const std::wstring text = ownVersion();
  std::wstring_view own = text;
  const std::wstring_view first = takeNumber(own);
  return !compareNumbers(first, takeNumber(version)) &&
         (!first.empty() || !compareNumbers(takeNumber(own), takeNumber(version)));
}

}  // namespace

int compareVersions(std::wstring_view a, std::wstring_view b) noexcept {
  int order = 0;
  while (!order && !(a.empty() && b.empty())) order = compareNumbers(takeNumber(a), takeNumber(b));
  return order;
}

std::wstring whyOtherMachine(u16 machine) {
  return L"The module is made for " + machineName(machine) + L", this program runs modules for " +
         machineName(kOwnMachine) + L'.';
}

std::wstring whyOtherContract(const SdkStamp& stamp) {
  const auto differ = [](const std::wstring& what, std::wstring_view its, std::wstring_view ours) {
    return what + std::wstring(its) + L", this is " + std::wstring(ours) + L'.';
  };
  if (!stamp.version.empty() && !isOwnContract(stamp.version))
    return differ(L"It is built for SDK ", stamp.version, ownVersion());
  if (!stamp.compiler.empty() && stamp.compiler != kOwnCompiler)
    return differ(L"It is built by a compiler of the family ", stamp.compiler, kOwnCompiler);
  if (!stamp.bits.empty() && stamp.bits != kOwnBits)
    return differ(L"It is built for ", std::wstring(stamp.bits) + L" bits", kOwnBits);
  return {};
}

}  // namespace corvix
