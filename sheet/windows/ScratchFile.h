#pragma once
// A file that is gone with its owner.

#include <string>

#include <windows.h>

#include "../Text.h"

namespace sheet {

class ScratchFile {
  public:
    // Refusal: it can't be made.
    ScratchFile();
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    HANDLE Handle() const { return m_handle; }
    const Text& Path() const { return m_path; }
    // Refusal: the bytes can't be written.
    void Write(const std::string& bytes);
    // All that was written so far; what is written next follows it.
    std::string Contents() const;

  private:
    Text m_path;
    HANDLE m_handle;
};

}  // namespace sheet
