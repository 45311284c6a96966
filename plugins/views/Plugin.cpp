// What the module makes: views, and the actions that the view in front answers for.
#include "shell/Plugin.h"
#include "descriptor.h"
#include "plugins/views/Views.h"

namespace corvix::views {

namespace {

// Without a view that takes it, it cannot be done.
class ViewAction final : public BSmartObject, public IAction {
  CORVIX_IDENTITY(ViewAction, 0x10160B99, 0x5DDD92F6, 0xA0C6088D, 0xE55A2164, BSmartObject, IAction)

 public:
  explicit ViewAction(const wchar_t* name) noexcept : name_(name) {}
  const wchar_t* name() const noexcept override { return name_; }
  int validate(IActionSender*) override { return notify::kStop; }
  int process(IActionSender*) override { return notify::kStop; }

 private:
  const wchar_t* name_;
};

template <class Declared>
constexpr FactoryRow actionRow() {
  return {Declared::name, []() -> IBSmartObject* { return new ViewAction(Declared::name); }};
}

}  // namespace

}  // namespace corvix::views

namespace views = corvix::views;

CORVIX_PLUGIN({descriptor::DocumentView_Paged::name, views::makePagedView},
              {descriptor::DocumentView_Text::name, views::makeTextView},
              views::actionRow<descriptor::Actions_View_ZoomIn>(), views::actionRow<descriptor::Actions_View_ZoomOut>(),
              views::actionRow<descriptor::Actions_View_ActualSize>(),
              views::actionRow<descriptor::Actions_View_FitWidth>(),
              views::actionRow<descriptor::Actions_View_NextPage>(),
              views::actionRow<descriptor::Actions_View_PreviousPage>())
