// Mistakes with an identity. Each is answered by the compiler with the sentence in front of it, and no other:
// check_mistakes.py compiles this file.
#include "shell/Plugin.h"

using namespace corvix;

class IFirst : public IBTransportable {
  CORVIX_IDENTITY(IFirst, 1, 0, 0, 0, IBTransportable)
};
class First : public BSmartObject, public IFirst {
  CORVIX_IDENTITY(First, 2, 0, 0, 0, BSmartObject, IFirst)
};
IBSmartObject* (*const makesFirst)() = create<First>;

// "the CORVIX_IDENTITY of First stands in another class: give that one a line of its own"
class Copied : public BSmartObject, public IFirst {
  CORVIX_IDENTITY(First, 2, 0, 0, 0, BSmartObject, IFirst)
};

// "the CORVIX_IDENTITY of NoBase names a class that is not a base of NoBase"
class NoBase : public BSmartObject {
  CORVIX_IDENTITY(NoBase, 3, 0, 0, 0, BSmartObject, IFirst)
};

// "the CORVIX_IDENTITY of AboveNameless names a base that has no CORVIX_IDENTITY of its own"
class Nameless : public BSmartObject {};
class AboveNameless : public Nameless {
  CORVIX_IDENTITY(AboveNameless, 4, 0, 0, 0, Nameless)
};

// "the CORVIX_IDENTITY of VirtualFirst names a virtual base before a plain one"
class VirtualFirst : public IBTransportable, public virtual BNotifySender {
  CORVIX_IDENTITY(VirtualFirst, 5, 0, 0, 0, BNotifySender, IBTransportable)
};

// "SameWords has the four words of one of its bases: take four new random ones"
class SameWords : public First {
  CORVIX_IDENTITY(SameWords, 1, 0, 0, 0, First)
};

// "two bases of Twins have the same four words: a query would mix them up"
class ITwin : public IBTransportable {
  CORVIX_IDENTITY(ITwin, 1, 0, 0, 0, IBTransportable)
};
class Twins : public First, public ITwin {
  CORVIX_IDENTITY(Twins, 6, 0, 0, 0, First, ITwin)
};

// "the class has no CORVIX_IDENTITY of its own: it would answer to the names of its base"
IBSmartObject* (*const makesNameless)() = create<Nameless>;

// "the CORVIX_IDENTITY of the class leaves out the base that makes it a counted object"
class LeavesOut : public BSmartObject, public IFirst {
  CORVIX_IDENTITY(LeavesOut, 7, 0, 0, 0, IFirst)
};
IBSmartObject* (*const makesLeavesOut)() = create<LeavesOut>;

// "what a module makes is counted: derive the class from corvix::BSmartObject"
class Uncounted : public IFirst {
  CORVIX_IDENTITY(Uncounted, 8, 0, 0, 0, IFirst)
};
auto* const makesUncounted = create<Uncounted>;
