// "Dialog.About": the program, and what it is put together from.
#include "plugins/dialogs/Dialogs.h"
#include "plugins/dialogs/ModalDialog.h"
#include "plugins/windows/List.h"
#include "plugins/windows/Translated.h"
#include "shell/Shell.h"
#include "shell/gui/Dialog.h"

namespace corvix::dialogs {

using namespace windows;

namespace {

class AboutDialog final : public BSmartObject, public IDialog, private ModalDialog {
  CORVIX_IDENTITY(AboutDialog, 0xA449A822, 0x71D6340B, 0x38F801D3, 0x6C2EC700, BSmartObject, IDialog)

 public:
  int show(CustomDialogRequest& request) override {
    if (IShell::getInstance()->isUnattended()) return notify::kStop;
    request.answer = run(translated(L"About"), 520, 320, true) == IDOK ? IDOK : IDCANCEL;
    return notify::kTaken;
  }

 private:
  void make() override {
    wchar_t program[MAX_PATH] = L"";
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const IPluginManager& manager = *IShell::getInstance()->pluginManager();
    const std::wstring text = sentence(L"%1, made with Corvix %2. What it can do comes from these modules:",
                                       {fileName(program), orEmpty(manager.moduleAt(0)->version())});
    icon_ = add(L"STATIC", L"", SS_ICON);
    SendMessageW(icon_, STM_SETICON,
                 reinterpret_cast<WPARAM>(LoadIconW(nullptr, reinterpret_cast<LPCWSTR>(IDI_APPLICATION))), 0);
    text_ = add(L"STATIC", text.c_str(), SS_NOPREFIX);
    list_.make(window(), 100,
               {{translated(L"Module"), 170},
                {translated(L"Version"), 60},
                {translated(L"Manufacturer"), 140},
                {translated(L"File"), 120}});
    setFont(list_.handle(), look().font());
    list_.adopt(look());
    std::vector<windows::Row> rows;
    for (i32 i = 0; i < manager.moduleCount(); ++i) {
      const IPluginModule& module = *manager.moduleAt(i);
      if (module.state() == ModuleState::NoPlugin) continue;
      rows.push_back({orEmpty(module.name()), orEmpty(module.version()), orEmpty(module.attribute(L"Manufacturer")),
                      fileName(module.path())});
    }
    list_.show(rows);
    addButton(L"OK", IDOK);
  }

  void adopt() override { list_.adopt(look()); }

  void place(RECT area) override {
    const int icon = look().scaled(44), head = look().scaled(44);
    MoveWindow(icon_, area.left, area.top, icon, head, TRUE);
    MoveWindow(text_, area.left + icon, area.top + look().scaled(4), widthOf(area) - icon, head, TRUE);
    MoveWindow(list_.handle(), area.left, area.top + head, widthOf(area), heightOf(area) - head, TRUE);
  }

  HWND icon_ = nullptr, text_ = nullptr;
  List list_;
};

}  // namespace

IBSmartObject* makeAboutDialog() { return new AboutDialog; }

}  // namespace corvix::dialogs
