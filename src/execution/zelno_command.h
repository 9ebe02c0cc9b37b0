#pragma once

#include <cstdint>

// A use case: run() does the whole job on the calling thread; stop(), from
// another thread, makes a run() in progress end. stop() must be accepted
// before run() has really begun, more than once, and just after run()
// returned.
class zelno_command {
  public:
    virtual ~zelno_command() = default;
    virtual int32_t run() = 0;
    virtual void stop() = 0;
};
