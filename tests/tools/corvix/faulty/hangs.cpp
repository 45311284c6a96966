#include "IFaulty.h"

#include <windows.h>

class Waiting : public Good {
 public:
  Waiting() { Sleep(INFINITE); }
};

CORVIX_PLUGIN({L"Faulty.Object", createAsGood<Waiting>})
