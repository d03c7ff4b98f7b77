// The client library as this system uses it: a status that throws, owners for counted objects, and the library's
// entry point, made ready once for the process. Private to this module: the engine's header stays below it.
#pragma once

#include "DatabaseError.h"

#include <firebird/Interface.h>

#include <memory>

namespace IDM_dmFirebird {

// A call's status. A failing call throws CDatabaseError with the sentence of a failing statement. One status serves
// one thread at a time. Making one clears the thread's last error for the call.
class CStatus : public Firebird::BaseStatusWrapper<CStatus> {
public:
    CStatus();
    ~CStatus() { dispose(); }
    CStatus(const CStatus&) = delete;
    CStatus& operator=(const CStatus&) = delete;

    static void checkException(CStatus* status) {
        if (status->dirty && (status->getState() & Firebird::IStatus::STATE_ERRORS)) [[unlikely]]
            status->Throw();
    }

private:
    [[noreturn]] void Throw();
};

struct CReleaser {
    template <class Object>
    void operator()(Object* object) const {
        object->release();
    }
};
struct CDisposer {
    template <class Object>
    void operator()(Object* object) const {
        object->dispose();
    }
};

// Owns one reference to an object of the client library.
template <class Object>
using CFbPtr = std::unique_ptr<Object, CReleaser>;
template <class Object>
using CFbDisposable = std::unique_ptr<Object, CDisposer>;

// Runs a library call that gives the object up when it succeeds (commit, detach, close, free).
template <class Object, class Call>
void GiveUp(CFbPtr<Object>& object, Call call) {
    call(object.get());
    static_cast<void>(object.release());
}

// The library's entry point. The first call settles where the engine keeps its lock files: in a directory of the
// user's own, unless the environment variable FIREBIRD_LOCK already names one.
Firebird::IMaster* Master();

} // namespace IDM_dmFirebird
