#include "shell/documents/manager/KDocManager_p.h"

#include "core/baselib/streams/BufferedOutputStream.h"
#include "core/baselib/system/Log.h"
#include "core/baselib/system/PartFile_p.h"
#include "shell/GlobalEvent.h"
#include "shell/documents/manager/DocumentReader_p.h"
#include "shell/documents/manager/WatchedStreams_p.h"
#include "shell/history/StateHistory.h"
#include "shell/language/Sentence.h"

#include <algorithm>

#include <windows.h>

namespace corvix {

namespace {

constexpr wchar_t kCaption[] = L"Teldane Quill";

class DocumentEvent final : public BSmartObject, public IGlobalEvent, public IDocumentEvent {
  CORVIX_IDENTITY(DocumentEvent, 0x95471B69, 0x52AECF2D, 0xA1A89DD8, 0xADC34A53, BSmartObject, IGlobalEvent,
                  IDocumentEvent)

 public:
  DocumentEvent(const wchar_t* name, IDocument* document, const std::wstring& location)
      : name_(name), document_(document), location_(location) {}
  const wchar_t* name() const noexcept override { return name_; }
  IDocument* document() const noexcept override { return document_; }
  const wchar_t* location() const noexcept override { return location_.c_str(); }

 private:
  const wchar_t* const name_;
  IDocument* const document_;
  const WideString location_;
};

}  // namespace

// From the beginning to the end of one operation: what it reports is the manager's report then, and in the log.
class KDocManager::Operation {
 public:
  explicit Operation(KDocManager& manager) : manager_(manager), report_(make<KReport>()) {}
  ~Operation() {
    for (i32 i = 0; i < report_->lineCount(); ++i) sWriteLog(L"%s\n", report_->lineAt(i));
    std::swap(manager_.report_, report_);
  }
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  KReport& report() noexcept { return *report_; }
  std::nullptr_t fail(const std::wstring& line) {
    report_->addLine(line.c_str());
    return nullptr;
  }

 private:
  KDocManager& manager_;
  Ref<KReport> report_;
};

KDocManager::KDocManager(IShell& shell) : shell_(shell), report_(make<KReport>()), recent_(*shell.settings()) {}

KDocManager::~KDocManager() = default;

KDocManager::Row* KDocManager::find(const IDocument* document) noexcept {
  const auto found =
      std::find_if(rows_.begin(), rows_.end(), [&](const Row& row) { return row.document.get() == document; });
  return document && found != rows_.end() ? &*found : nullptr;
}

// By its name, or by the file that both names are of.
KDocManager::Row* KDocManager::findFile(const DocumentPlace& place) noexcept {
  for (Row& row : rows_) {
    if (place.path.empty() ? row.place.path.empty() && row.place.location == place.location
                           : isSamePath(row.place.path, place.path))
      return &row;
  }
  FileState wanted;
  if (place.path.empty() || stateOf(place.path, wanted) != 0) return nullptr;
  for (Row& row : rows_) {
    FileState own;
    if (!row.place.path.empty() && stateOf(row.place.path, own) == 0 && own.isSameFile(wanted)) return &row;
  }
  return nullptr;
}

IDocument* KDocManager::documentAt(i32 index) const noexcept {
  return index >= 0 && index < documentCount() ? rows_[static_cast<std::size_t>(index)].document.get() : nullptr;
}

// What cannot be told, for lack of memory, is in the log: the operation itself was done.
void KDocManager::tell(const wchar_t* event, IDocument* document, const std::wstring& location) {
  try {
    shell_.pluginManager()->raiseEvent(*make<DocumentEvent>(event, document, location));
  } catch (const std::bad_alloc&) {
    sWriteLog(L"%s was not told to everybody: memory is short.\n", event);
  }
}

void KDocManager::activate(IDocument* document) {
  if (active_ == document) return;
  active_ = document;
  try {
    if (IStateHistory* const history = shell_.stateHistory()) history->setActive(document);
  } catch (const std::bad_alloc&) {
    sWriteLog("A document has no history: memory is short.\n");
  }
  tell(L"Document.Activated", document, document ? document->location() : L"");
}

bool KDocManager::setActiveDocument(IDocument* document) {
  if (document && !find(document)) return false;
  activate(document);
  return true;
}

DocAnswer KDocManager::ask(DocQuestion question, IDocument& document, const std::wstring& text) {
  if (questions_) {
    return callForeign(codeOf(questions_), L"IDocQuestions",
                       [&] { return questions_->ask(question, &document, text.c_str()); });
  }
  const u32 style = question == DocQuestion::SaveBeforeClosing ? MB_YESNOCANCEL : MB_YESNO | MB_DEFBUTTON2;
  const i32 answer = shell_.messageBox(text.c_str(), kCaption, style | MB_ICONWARNING | MB_TASKMODAL, IDNO);
  return answer == IDYES ? DocAnswer::Yes : answer == IDNO ? DocAnswer::No : DocAnswer::Cancel;
}

std::wstring KDocManager::sentence(const wchar_t* text, std::wstring_view part) const {
  const auto translator = createObject<IBTranslator>(*shell_.pluginManager(), L"IBTranslator.Instance");
  return composeSentence(translator.get(), text, {part});
}

IBCollection* KDocManager::dialogFilters(bool forWriting) {
  return FormatList(*shell_.pluginManager()).filters(forWriting);
}

IDocument* KDocManager::list(Ref<IDocument> document, const DocumentPlace& place, const FileState& state) {
  IDocument* const listed = document.get();
  rows_.push_back({std::move(document), place, state, false});
  return listed;
}

IDocument* KDocManager::openDocument(const wchar_t* location) {
  Operation operation(*this);
  DocumentPlace place;
  if (!resolvePlace(location, place))
    return operation.fail(quoted(location ? location : L"") + L" names no file and no location.");
  if (Row* const row = findFile(place)) {
    IDocument* const open = row->document.get();
    recent_.add(row->place.location);
    if (active_ == open) {
      tell(L"Document.Activated", open, open->location());  // who showed it may have let it go
    } else {
      activate(open);
    }
    return find(open) ? open : nullptr;
  }
  const std::wstring cannot = quoted(place.location) + L" cannot be opened.";
  FileState state;
  if (const u32 error = place.path.empty() ? 0 : stateOf(place.path, state))
    return operation.fail(cannot + L' ' + systemText(error));
  const auto document = DocumentReader(shell_, place, operation.report()).read();
  if (!document) {
    const auto reasons = make<KReport>();
    reasons->take(operation.report());
    operation.fail(cannot);
    operation.report().addLines(*reasons, 0);
    return nullptr;
  }
  if (Row* const row = findFile(place)) return row->document.get();  // somebody was faster, while progress was shown
  IDocument* const open = list(document, place, state);
  try {
    recent_.add(place.location);
  } catch (const std::bad_alloc&) {  // the list lacks it
  }
  tell(L"Document.Opened", open, place.location);
  if (find(open)) shell_.openDocument(open, place.location.c_str());
  if (find(open)) activate(open);
  return find(open) ? open : nullptr;
}

IDocument* KDocManager::newDocument(const wchar_t* formatName) {
  Operation operation(*this);
  const FormatList formats(*shell_.pluginManager());
  const DeclaredFormat* const format = formats.find(formatName ? formatName : L"");
  if (!format) return operation.fail(quoted(formatName ? formatName : L"") + L" is no format that a plug-in declares.");
  const auto object = makeFormat(*format, operation.report());
  if (!object) return nullptr;
  const auto made = callForeign(codeOf(object.get()), L"IDocFormat",
                                [&] { return Ref<IBSmartObject>::adopt(object->createDocument()); });
  auto document = made.as<IDocument>();
  if (!document)
    return operation.fail(std::wstring(format->textForUser()) + L": there are no new ones of this format.");
  const std::wstring title = sentence(L"Untitled %1", std::to_wstring(untitled_ + 1));
  if (const auto placed = document.as<IDocumentPlace>())
    placed->setPlace(L"", title.c_str(), format->name(), !format->writes);
  if (!hasTexts(*document, *format, operation.report())) return nullptr;
  IDocument* const open = list(std::move(document), {{}, title, {}}, {});
  ++untitled_;
  tell(L"Document.Opened", open, {});
  if (find(open)) activate(open);
  return find(open) ? open : nullptr;
}

bool KDocManager::closeDocument(IDocument* document) {
  Operation operation(*this);
  if (!find(document) || find(document)->isClosing) return false;
  const auto kept = Ref<IDocument>::share(document);
  const std::wstring title = document->title();
  if (find(document)->isBeingWritten) {
    operation.fail(quoted(title) + L" is being saved: close it when that is done.");
    return false;
  }
  if (document->isModified()) {
    const DocAnswer answer =
        ask(DocQuestion::SaveBeforeClosing, *document, sentence(L"\"%1\" has changed. Do you want to save it?", title));
    if ((answer != DocAnswer::Yes && answer != DocAnswer::No) || !find(document)) return !find(document);
    if (answer == DocAnswer::Yes && document->isModified() && !saveDocument(document)) {
      for (i32 i = 0; i < report_->lineCount(); ++i) operation.fail(report_->lineAt(i));
      return false;
    }
    if (answer == DocAnswer::No) sWriteLog(L"%s was closed without its changes.\n", title.c_str());
  }
  const std::wstring location = document->location();
  find(document)->isClosing = true;
  tell(L"Document.Closing", document, location);
  Row* const row = find(document);
  if (!row) return true;
  const auto at = rows_.erase(rows_.begin() + (row - rows_.data()));
  if (active_ == document)
    activate(rows_.empty() ? nullptr : at == rows_.end() ? rows_.back().document.get() : at->document.get());
  if (IStateHistory* const history = shell_.stateHistory()) history->forget(document);
  tell(L"Document.Closed", nullptr, location);
  return true;
}

bool KDocManager::saveDocument(IDocument* document) {
  Operation operation(*this);
  const Row* const row = find(document);
  if (!row) return false;
  if (row->place.path.empty()) {
    operation.fail(quoted(document->title()) + (row->place.location.empty()
                                                    ? L" has no name yet: save it under one."
                                                    : L" did not come from a file: save it under the name of one."));
    return false;
  }
  const FormatList formats(*shell_.pluginManager());
  const DeclaredFormat* const format = formats.find(document->formatName());
  if (!format || !format->writes) {
    operation.fail(quoted(document->title()) + L" cannot be saved in its own format: save it in another one.");
    return false;
  }
  const DocumentPlace place = row->place;
  return save(*document, place, *format, operation.report());
}

bool KDocManager::saveDocumentAs(IDocument* document, const wchar_t* location, const wchar_t* formatName) {
  Operation operation(*this);
  if (!find(document)) return false;
  DocumentPlace place;
  if (!resolvePlace(location, place) || place.path.empty()) {
    operation.fail(quoted(location ? location : L"") + L" names no file.");
    return false;
  }
  if (const Row* const other = findFile(place); other && other->document.get() != document) {
    operation.fail(quoted(place.location) + L" is open itself: close it first, or take another name.");
    return false;
  }
  const FormatList formats(*shell_.pluginManager());
  const bool isNamed = formatName && *formatName;
  const DeclaredFormat* format = isNamed ? formats.find(formatName) : formats.writerOf(place.title);
  if (!format && !isNamed) format = formats.find(document->formatName());
  if (!format || !format->writes) {
    operation.fail(L"No format is there that could write " + quoted(isNamed ? formatName : place.title.c_str()) + L'.');
    return false;
  }
  return save(*document, place, *format, operation.report());
}

bool KDocManager::save(IDocument& document, const DocumentPlace& place, const DeclaredFormat& format, KReport& report) {
  const auto kept = Ref<IDocument>::share(&document);
  if (find(&document)->isBeingWritten) {
    report.addLine((quoted(document.title()) + L" is being saved already.").c_str());
    return false;
  }
  if (!write(document, place, format, report)) return false;
  if (!format.reads) return true;
  Row* const row = find(&document);
  if (!row) return true;
  DocumentPlace taken = place;
  if (stateOf(place.path, row->state) != 0) row->state = {};  // nobody knows it: nobody is asked about it
  std::swap(row->place, taken);
  callForeign(codeOf(&document), L"IDocument", [&] {
    if (IDocumentPlace* const placed = corvix::query<IDocumentPlace>(&document))
      placed->setPlace(place.location.c_str(), place.title.c_str(), format.name(), false);
  });
  try {
    recent_.add(place.location);
  } catch (const std::bad_alloc&) {  // the list lacks it
  }
  tell(L"Document.Saved", &document, place.location);
  return true;
}

bool KDocManager::write(IDocument& document, const DocumentPlace& place, const DeclaredFormat& format,
                        KReport& report) {
  const auto fail = [&](const std::wstring& why) {
    report.addLine((quoted(place.location) + L" was not saved. " + why).c_str());
    return false;
  };
  struct Writing {
    KDocManager& manager;
    const IDocument& document;
    void mark(bool is) noexcept { manager.find(&document)->isBeingWritten = is; }  // nobody closes it meanwhile
    Writing(KDocManager& m, const IDocument& d) noexcept : manager(m), document(d) { mark(true); }
    ~Writing() { mark(false); }
  } const writing(*this, document);
  FileState now;
  constexpr wchar_t kInUse[] = L"It is read-only, or in use: save under another name.";
  const u32 found = stateOf(place.path, now);
  const bool exists = found == 0;
  if (found == kIsFolder) return fail(systemText(found));
  if (exists && !isWritable(place.path)) return fail(kInUse);
  const Row& row = *find(&document);
  if (exists && isSamePath(row.place.path, place.path) && row.state != FileState{} && row.state != now) {
    const std::wstring question =
        sentence(L"\"%1\" was changed by another program. Do you want to overwrite it?", place.location);
    if (ask(DocQuestion::OverwriteChanged, document, question) != DocAnswer::Yes)
      return fail(L"It was changed by another program.");
  }
  const auto object = makeFormat(format, report);
  if (!object) return false;

  u32 error = 0;
  PartFile part(place.path.c_str(), &error);
  if (!part) return fail(systemText(error));
  const auto file = make<BFileOutputStream>();
  if (!file->open(part.path(), BFileOutputStream::Existing::Modify)) return fail(systemText(GetLastError()));
  bool isWritten = false;
  {
    ShownProgress progress(shell_, 0);
    const auto watched = make<WatchedOutputStream>(file, progress);
    const auto stream = make<BBufferedOutputStream>(watched);
    isWritten = callForeign(codeOf(object.get()), L"IDocFormat",
                            [&] { return object->writeDocument(&document, stream.get(), &report); });
    isWritten = isWritten && stream->flush();
    error = watched->error();
    watched->letGo();
  }
  if (error == ERROR_CANCELLED) return fail(L"It was stopped.");
  if (error) return fail(systemText(error));
  if (!isWritten) return fail(std::wstring(format.textForUser()) + L" cannot hold it.");
  if ((error = part.flush()) != 0) return fail(systemText(error));
  error = part.takePlace();
  if (exists && (error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION)) return fail(kInUse);
  return error ? fail(systemText(error)) : true;
}

}  // namespace corvix
