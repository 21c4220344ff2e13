#include "Announce.h"

// Of the sanitizer's runtime; null when it isn't linked in.
extern "C" {
[[gnu::weak]] void __tsan_acquire(void* sync);
[[gnu::weak]] void __tsan_release(void* sync);
[[gnu::weak]] void AnnotateIgnoreReadsBegin(const char* file, int line);
[[gnu::weak]] void AnnotateIgnoreReadsEnd(const char* file, int line);
[[gnu::weak]] void AnnotateIgnoreWritesBegin(const char* file, int line);
[[gnu::weak]] void AnnotateIgnoreWritesEnd(const char* file, int line);
}

namespace platform {

void AnnounceRelease(const void* sync) {
    if (__tsan_release != nullptr) __tsan_release(const_cast<void*>(sync));
}

void AnnounceAcquire(const void* sync) {
    if (__tsan_acquire != nullptr) __tsan_acquire(const_cast<void*>(sync));
}

void AnnounceEntry() {
    if (AnnotateIgnoreReadsBegin == nullptr) return;
    AnnotateIgnoreReadsBegin(__FILE__, __LINE__);
    AnnotateIgnoreWritesBegin(__FILE__, __LINE__);
}

void AnnounceExit() {
    if (AnnotateIgnoreReadsEnd == nullptr) return;
    AnnotateIgnoreWritesEnd(__FILE__, __LINE__);
    AnnotateIgnoreReadsEnd(__FILE__, __LINE__);
}

}  // namespace platform
