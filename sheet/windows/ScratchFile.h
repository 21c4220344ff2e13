#pragma once
// A file that is gone with its owner.

#include <string>

#include <windows.h>

#include "../SheetText.h"

namespace sheet {

class ScratchFile {
  public:
    // An empty file, open to be written at its end. Refusal: it can't be made.
    ScratchFile();
    // A closed file of those bytes. Refusal: it can't be made or written.
    explicit ScratchFile(const std::string& bytes);
    ~ScratchFile();
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    // INVALID_HANDLE_VALUE when it is closed.
    HANDLE Handle() const { return m_handle; }
    const Text& Path() const { return m_path; }
    // All that was written so far; empty when it can't be read.
    std::string Contents() const;

  private:
    void Close();

    Text m_path;
    HANDLE m_handle = INVALID_HANDLE_VALUE;
};

}  // namespace sheet
