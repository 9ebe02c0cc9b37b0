#pragma once

#include <cstdint>

#include "execution/zelno_command.h"
#include "utilities/udll.h"

// How a use case reaches its functions in the use-case library: its
// resolver and the names of its run, stop and destroy functions, and of the
// progress function that a library may offer.
struct library_functions {
    VX_UTL::uDll::symbol (*resolve)(const char* name);
    const char* run;
    const char* stop;
    const char* destroy;
    const char* progress = nullptr;  // Null: the use case has none.
};

// A use case whose work the use-case library does behind a handle. No
// function address is kept: each call asks the resolver again.
//
// Made and destroyed on the main thread; run comes from the use case's
// thread, stop from the main or the console control thread while run is in
// progress, serialised by the runnable; figures from the main thread while
// run is in progress. No lock here: `handle` changes only in the destructor.
class library_command : public zelno_command {
  public:
    ~library_command() override;
    library_command(const library_command&) = delete;
    library_command& operator=(const library_command&) = delete;

    int32_t run() override;
    void stop() override;
    run_figures figures() override;

  protected:
    // Takes the handle and checks that all three functions exist, so that a
    // library lacking one fails here, before anything is queued. On failure
    // the handle goes back to the library if it can, and the error leaves.
    library_command(const library_functions& functions, void* handle);

  private:
    const library_functions& functions;
    void* handle;  // Owned: ends with the object.
    // Whether the library offers the progress function; found once, as its
    // absence would otherwise cost a failed look-up at every call.
    bool has_progress = false;
};
