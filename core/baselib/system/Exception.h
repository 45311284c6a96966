// SException: the error object, thrown as a pointer: `catch (SException* error)`. It can be caught in the
// program and in every plug-in. What the library throws is a static object of the place that throws it, the
// same one each time: a catcher does not free it.
#pragma once

#include "core/baselib/heap/HeapBuffer.h"
#include "core/baselib/identity/RttiSupport.h"

namespace corvix {

class CORVIX_API SException : public HeapAllocated, public virtual IBRTTISupport {
  CORVIX_IDENTITY(SException, 0x349DDF0C, 0x46F6E22B, 0xB7347A10, 0xA2178746, IBRTTISupport)

 public:
  // Where the error was detected, and what it is: for a condition that does not hold, its text. The texts are
  // copied; `message` may be null.
  SException(const wchar_t* sourceFile, i32 sourceLine, const wchar_t* message);
  SException(const SException&) = delete;
  SException& operator=(const SException&) = delete;
  virtual ~SException();

  // Shows the message in a message box and returns when the user has answered it.
  virtual void report();

  // A copy of the message, or of "<Unspecified>" when there is none; the caller frees it with _sfree. Null
  // only when memory is short.
  virtual wchar_t* getMessage() const;

  const wchar_t* sourceFile() const noexcept { return sourceFile_.get(); }
  i32 sourceLine() const noexcept { return sourceLine_; }

 private:
  HeapBuffer<wchar_t> sourceFile_;
  i32 sourceLine_;
  HeapBuffer<wchar_t> message_;

 protected:
  u32 reserved_ = 0;  // always 0; part of the object's layout
};

}  // namespace corvix
