#pragma once

namespace VX_UTL {

// The body of a uThread.
class uRunnable {
  public:
    virtual ~uRunnable() = default;
    virtual void run() = 0;
};

}  // namespace VX_UTL
