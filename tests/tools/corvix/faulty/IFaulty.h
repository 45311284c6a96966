#pragma once

#include "shell/Plugin.h"

class IFaulty : public corvix::IBTransportable {
  CORVIX_IDENTITY(IFaulty, 0x6F1D20A7, 0x4B93C85E, 0x8E07F4D1, 0x35CA6B92, corvix::IBTransportable)
};

class IOther : public corvix::IBTransportable {
  CORVIX_IDENTITY(IOther, 0xB2507E3C, 0x4D18A9F6, 0x97C36E40, 0xE1F5082D, corvix::IBTransportable)
};

class Good : public corvix::BSmartObject, public IFaulty {
  CORVIX_IDENTITY(Good, 0x20E9B7C4, 0x4F56D31A, 0xA8136C95, 0x7D4E0FB8, corvix::BSmartObject, IFaulty)
};

class Other : public corvix::BSmartObject, public IOther {
  CORVIX_IDENTITY(Other, 0x914C5DE0, 0x43AB7F26, 0xBD80E157, 0x0F62C93A, corvix::BSmartObject, IOther)
};

inline void writeToNothing() { *static_cast<volatile int*>(nullptr) = 1; }

inline volatile int zero = 0;
inline void divideByNothing() { zero = 7 / zero; }

inline int deeper(int depth) {
  volatile char room[1000];
  room[0] = static_cast<char>(depth);
  return zero ? 0 : deeper(depth + 1) + room[0];
}
inline void takeAllStack() { deeper(0); }

#ifndef FAULTY_CRASH
#define FAULTY_CRASH writeToNothing
#endif
inline void crash() { FAULTY_CRASH(); }

// For classes that only misbehave: they have no identity of their own.
template <class Misbehaving>
corvix::IBSmartObject* createAsGood() {
  return new Misbehaving;
}
