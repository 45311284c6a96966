// A list of the system's in columns, which is told what it shows as a whole and changes only what differs: the user's
// place and choice in it stay.
#pragma once

#include "plugins/windows/Look.h"

#include <string>
#include <vector>

namespace corvix::windows {

struct Column {
  const wchar_t* title;
  int width;  // in 1/96 inch
};

using Row = std::vector<std::wstring>;

class List {
 public:
  void make(HWND parent, int id, std::vector<Column> columns);
  void adopt(const Look& look);

  // Texts of others are shown without what would turn the direction of writing or break the line.
  void show(const std::vector<Row>& rows);

  // Whether the last row can be seen, and how it is brought there.
  bool isAtEnd() const;
  void showEnd() const;

  HWND handle() const noexcept { return handle_; }
  int selected() const;  // -1: none
  void select(int index) const;
  void copySelected() const;  // to the clipboard, with tabulators between the columns

 private:
  HWND handle_ = nullptr;
  std::vector<Column> columns_;
  std::vector<Row> shown_;
};

}  // namespace corvix::windows
