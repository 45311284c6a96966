#include "IFaulty.h"

#include <windows.h>
#include <thread>

class Busy : public Good {
 public:
  Busy() {
    std::thread([] { Sleep(INFINITE); }).detach();
  }
};

CORVIX_PLUGIN({L"Faulty.Object", createAsGood<Busy>})
