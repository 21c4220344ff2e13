#pragma once
// A fresh machine with a module of resources that a test writes by hand, and a user with a list of
// deeds.

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <windows.h>

#include "FactsMachine.h"
#include "Modules.h"
#include "User.h"

// Little-endian bytes.
class Bytes {
  public:
    Bytes& Word(unsigned value) {
        data.push_back(static_cast<BYTE>(value));
        data.push_back(static_cast<BYTE>(value >> 8));
        return *this;
    }
    Bytes& Dword(DWORD value) { return Word(value & 0xFFFF).Word(value >> 16); }
    Bytes& Text(std::u16string_view text) {
        for (const char16_t unit : text)
            Word(unit);
        return Word(0);
    }
    // A type, class or name given by number.
    Bytes& Ordinal(unsigned value) { return Word(0xFFFF).Word(value); }
    Bytes& Append(const std::vector<BYTE>& more) {
        data.insert(data.end(), more.begin(), more.end());
        return *this;
    }
    Bytes& Align() {
        while (data.size() % 4 != 0)
            data.push_back(0);
        return *this;
    }
    std::vector<BYTE> data;
};

// One DIALOGEX template. Positions in dialog units.
class DialogBytes {
  public:
    explicit DialogBytes(std::u16string_view title) : m_title(title) {}

    DialogBytes& Control(std::u16string_view className, int id, DWORD style = WS_VISIBLE) {
        m_items.Align().Dword(0).Dword(0).Dword(style);
        m_items.Word(7).Word(7).Word(50).Word(14).Dword(static_cast<DWORD>(id));
        if (className.size() == 1)
            m_items.Ordinal(className[0]);
        else
            m_items.Text(className);
        m_items.Word(0).Word(0);
        ++m_count;
        return *this;
    }
    std::vector<BYTE> Data() const {
        Bytes all;
        all.Word(1)
            .Word(0xFFFF)
            .Dword(0)
            .Dword(0)
            .Dword(WS_POPUP | WS_CAPTION | DS_SETFONT)
            .Word(m_count);
        all.Word(0).Word(0).Word(200).Word(100);
        all.Word(0).Word(0).Text(m_title);
        all.Word(8).Word(400).Word(0x100).Text(u"MS Shell Dlg").Align();
        return all.Append(m_items.data).data;
    }

  private:
    std::u16string m_title;
    Bytes m_items;
    unsigned m_count = 0;
};

// A .res file.
class ResourceFile {
  public:
    ResourceFile() { Add(Bytes().Ordinal(0), Bytes().Ordinal(0), {}); }
    ResourceFile& Add(const Bytes& type, const Bytes& name, const std::vector<BYTE>& data) {
        const auto names = static_cast<DWORD>(type.data.size() + name.data.size());
        const DWORD padded = (names + 3) / 4 * 4;
        m_file.Dword(static_cast<DWORD>(data.size())).Dword(8 + padded + 16);
        m_file.Append(type.data).Append(name.data).Align();
        m_file.Dword(0).Word(0x1030).Word(0x409).Dword(0).Dword(0);
        m_file.Append(data).Align();
        return *this;
    }
    ResourceFile& Dialog(unsigned id, const DialogBytes& dialog) {
        return Add(Bytes().Ordinal(5), Bytes().Ordinal(id), dialog.Data());
    }
    const std::vector<BYTE>& Data() const { return m_file.data; }

  private:
    Bytes m_file;
};

class DeedUser : public platform::User {
  public:
    int OnMessageBox(const platform::MessageBoxRequest& request) override {
        boxes.push_back(request);
        return onBox ? onBox(request) : IDOK;
    }
    std::optional<std::u16string> OnFileDialog(const platform::FileDialogRequest&) override {
        return file;
    }
    bool OnIdle() override {
        if (deeds.empty()) return false;
        const std::function<void()> deed = deeds.front();
        deeds.pop_front();
        deed();
        return true;
    }

    std::deque<std::function<void()>> deeds;
    std::function<int(const platform::MessageBoxRequest&)> onBox;
    std::optional<std::u16string> file;
    std::vector<platform::MessageBoxRequest> boxes;
};

struct DesktopMachine {
    explicit DesktopMachine(const ResourceFile& resources = {}, std::uint64_t seed = 0)
        : machine(seed) {
        FailOnLeaks(machine);
        machine.user = &user;
        platform::Modules& modules = machine.Get<platform::Modules>();
        modules.Install({u"test.dll", nullptr, resources.Data(), {}});
        module = modules.Load(u"test.dll", "test");
    }
    ~DesktopMachine() { machine.Get<platform::Modules>().Free(module); }

    DeedUser user;
    platform::Machine machine;
    HMODULE module;
};

inline std::u16string TextOf(HWND window) {
    char16_t text[256];
    return std::u16string(text, static_cast<std::size_t>(GetWindowTextW(window, text, 256)));
}
