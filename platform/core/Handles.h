#pragma once
// HANDLEs of kernel objects: files, threads, events, mutexes, tokens. Registry keys, windows and
// modules have their own kinds of handle.

#include <memory>
#include <unordered_map>

#include "Machine.h"

namespace platform {

class KernelObject {
  public:
    virtual ~KernelObject() = default;
    // A wait: true when the object is signalled; Take consumes the signal for that thread.
    virtual bool Signalled(unsigned thread) const {
        (void)thread;
        return false;
    }
    virtual void Take(unsigned thread) { (void)thread; }
};

class Handles : public Part {
  public:
    // Gives a new handle that shares ownership of the object; call: the function that made it, for
    // the ledger.
    HANDLE Open(std::shared_ptr<KernelObject> object, const char* call);
    // Null when the handle isn't open.
    std::shared_ptr<KernelObject> Find(HANDLE handle) const;
    template <class T>
    std::shared_ptr<T> Find(HANDLE handle) const {
        return std::dynamic_pointer_cast<T>(Find(handle));
    }
    bool Close(HANDLE handle);

  private:
    std::unordered_map<HANDLE, std::shared_ptr<KernelObject>> m_open;
    std::size_t m_next = 1;
};

}  // namespace platform
