#include "shell/modules/ObjectWatch_p.h"

#include "core/baselib/system/Log.h"

#include <algorithm>
#include <cwchar>

#include <windows.h>

namespace corvix {

ObjectWatch::ObjectWatch() {
  destroyNotifications().addListener(this);
  objectWatch = this;
}

ObjectWatch::~ObjectWatch() {
  objectWatch = nullptr;
  destroyNotifications().removeListener(this);
}

void ObjectWatch::made(const IPluginInterface& entry, IBSmartObject& object) {
  if (object.refCount() > 0) return;
  const SCriticalSection::Lock lock(section_);
  made_.insert_or_assign(identityOf(&object), Made{&entry, object.typeInfo().classNameW(), GetCurrentThreadId()});
}

void ObjectWatch::forget(IBSmartObject& object) {
  const SCriticalSection::Lock lock(section_);
  made_.erase(identityOf(&object));
}

int ObjectWatch::onDestroy(IBRTTISupport* sender) {
  const SCriticalSection::Lock lock(section_);
  const auto found = made_.find(sender);
  if (found == made_.end()) return notify::kGoOn;
  const Made& made = found->second;
  if (made.thread != GetCurrentThreadId())
    sWriteLog(L"Object watch: a %s, made for \"%s\" by %s on thread %u, was released on thread %u\n", made.className,
              made.entry->name(), made.entry->module()->path(), made.thread, GetCurrentThreadId());
  made_.erase(found);
  return notify::kGoOn;
}

std::vector<ObjectsLeft> ObjectWatch::left() {
  const SCriticalSection::Lock lock(section_);
  std::vector<ObjectsLeft> rows;
  for (const auto& one : made_) {
    const Made& made = one.second;
    const wchar_t* const name = made.entry->name();
    const wchar_t* const path = made.entry->module()->path();
    const auto same = std::find_if(rows.begin(), rows.end(), [&](const ObjectsLeft& row) {
      return row.modulePath == path && !std::wcscmp(row.className, made.className) &&
             !std::wcscmp(row.interfaceName, name);
    });
    if (same != rows.end()) {
      ++same->count;
    } else {
      rows.push_back({name, made.className, path, 1});
    }
  }
  std::sort(rows.begin(), rows.end(), [](const ObjectsLeft& a, const ObjectsLeft& b) {
    return a.count != b.count ? a.count > b.count : std::wcscmp(a.interfaceName, b.interfaceName) < 0;
  });
  return rows;
}

}  // namespace corvix
