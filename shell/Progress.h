// Showing how far a long piece of work is. Who works raises the four progress notifications through IShell; who
// shows listens as an IProgressCallback. [shell thread]
#pragma once

#include "core/baselib/objects/SmartObject.h"

namespace corvix {

// The five numbers of every progress notification.
struct Progress {
  i32 id;        // tells apart what runs at the same time; chosen by who works, see IShell::newProgressId
  i32 minimum;   // position at the start
  i32 maximum;   // position at the end; not above `minimum`: the end is not known
  i32 position;  // now
  i32 flags;     // of kProgress...
};

constexpr i32 kProgressCanStop = 1;   // a listener may answer notify::kStop to ask for an early end
constexpr i32 kProgressIsHidden = 2;  // short work: shown only by who shows everything

// Told of progress. Every handler returns one of notify::k... .
class IProgressCallback : public IBTransportable {
  CORVIX_IDENTITY(IProgressCallback, 0xCA5DF8F9, 0xC1AA8392, 0x2CEBF141, 0xD923D8FB, IBTransportable)

 public:
  virtual int onStartProgress(const Progress& progress) = 0;
  virtual int onChangeProgress(const Progress& progress) = 0;
  virtual int onUpdateProgress(const Progress& progress) = 0;  // the same position: only show it again
  virtual int onStopProgress(const Progress& progress) = 0;
};

// Something that shows one progress.
class IBProgressIndicator : public IBTransportable {
  CORVIX_IDENTITY(IBProgressIndicator, 0x58EA97F5, 0xBC9881F8, 0xFE3921A3, 0x7BBAF46A, IBTransportable)

 public:
  virtual void setRange(i32 minimum, i32 maximum) = 0;
  virtual void setPosition(i32 position) = 0;
};

}  // namespace corvix
