// Events, mutexes, waiting, and messages between threads.

#include "Conformance.h"

namespace {

class WaitingTest : public DialogCase {};

// A thread at work. The owner waits for its end.
class Worker {
  public:
    explicit Worker(std::function<void()> work)
        : m_work(std::move(work)), m_thread(CreateThread(nullptr, 0, &Body, &m_work, 0, nullptr)) {}
    ~Worker() {
        EXPECT_EQ(WaitForSingleObject(m_thread, INFINITE), WAIT_OBJECT_0);
        CloseHandle(m_thread);
    }

  private:
    static DWORD WINAPI Body(LPVOID work) {
        (*static_cast<std::function<void()>*>(work))();
        return 0;
    }
    std::function<void()> m_work;
    const HANDLE m_thread;
};

TEST_F(WaitingTest, WhichHandleEndsTheWait) {
    const struct {
        std::vector<int> set;  // the events that are set, of three; the last one resets itself
        DWORD result;
        std::vector<int> left;  // set afterwards
        const char* why;
    } cases[] = {
        {{}, WAIT_TIMEOUT, {}, "none is set"},
        {{1, 2}, WAIT_OBJECT_0 + 1, {1, 2}, "the first in order, and only that one"},
        {{2}, WAIT_OBJECT_0 + 2, {}, "it resets itself"},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.why);
        HANDLE events[3];
        for (int i = 0; i < 3; ++i)
            events[i] = CreateEventW(nullptr, i < 2, FALSE, nullptr);
        for (const int i : row.set)
            EXPECT_TRUE(SetEvent(events[i]));
        EXPECT_EQ(WaitForMultipleObjects(3, events, FALSE, 20), row.result);
        std::vector<int> left;
        for (int i = 0; i < 3; ++i) {
            if (WaitForSingleObject(events[i], 0) == WAIT_OBJECT_0) left.push_back(i);
            EXPECT_TRUE(CloseHandle(events[i]));
        }
        EXPECT_EQ(left, row.left);
    }
}

TEST_F(WaitingTest, AMutexIsItsOwnersUntilTheLastRelease) {
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, nullptr);
    const HANDLE tried = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    std::vector<DWORD> results;
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(ReleaseMutex(mutex));
    {
        const Worker worker([&] {
            results.push_back(WaitForSingleObject(mutex, 20));
            SetEvent(tried);
            results.push_back(WaitForSingleObject(mutex, INFINITE));
            ReleaseMutex(mutex);
        });
        EXPECT_EQ(WaitForSingleObject(tried, INFINITE), WAIT_OBJECT_0);
        EXPECT_TRUE(ReleaseMutex(mutex));
    }
    EXPECT_EQ(results, (std::vector<DWORD>{WAIT_TIMEOUT, WAIT_OBJECT_0}));
    CloseHandle(mutex);
    CloseHandle(tried);
}

// As a page waits for its worker: it goes on answering what the worker sends.
TEST_F(WaitingTest, ASentMessageRunsInTheThreadOfItsWindow) {
    Open(IDD_BUTTONS);
    int inside = 0;  // the procedure is never entered while the wait is left
    on = [&](HWND window, UINT message, WPARAM wParam, LPARAM) -> INT_PTR {
        if (message != WM_APP) return FALSE;
        EXPECT_EQ(++inside, 1);
        SetWindowLongPtrW(window, DWLP_MSGRESULT, static_cast<LONG_PTR>(wParam) * 10);
        --inside;
        return TRUE;
    };
    const HANDLE done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::vector<LRESULT> answers;
    {
        const Worker worker([&] {
            for (const WPARAM number : {1U, 2U, 3U})
                answers.push_back(SendMessageW(dialog, WM_APP, number, 0));
            SetEvent(done);
        });
        DWORD wake;
        while ((wake = MsgWaitForMultipleObjectsEx(1, &done, INFINITE, QS_SENDMESSAGE,
                                                   MWMO_INPUTAVAILABLE)) == WAIT_OBJECT_0 + 1) {
            MSG message;
            PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
        }
        EXPECT_EQ(wake, WAIT_OBJECT_0);
    }
    EXPECT_EQ(answers, (std::vector<LRESULT>{10, 20, 30}));
    CloseHandle(done);
}

// As a command waits for the mutex of a page while the page's worker, which has it, sends.
TEST_F(WaitingTest, AMutexIsWaitedForWhileSentMessagesAreAnswered) {
    Open(IDD_BUTTONS);
    int answered = 0;
    on = [&](HWND, UINT message, WPARAM, LPARAM) -> INT_PTR {
        return message == WM_APP && ++answered;
    };
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, nullptr);
    const HANDLE owned = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    {
        const Worker worker([&] {
            WaitForSingleObject(mutex, INFINITE);
            SetEvent(owned);
            SendMessageW(dialog, WM_APP, 0, 0);
            SendMessageW(dialog, WM_APP, 0, 0);
            ReleaseMutex(mutex);
        });
        EXPECT_EQ(WaitForSingleObject(owned, INFINITE), WAIT_OBJECT_0);
        DWORD wake;
        while ((wake = MsgWaitForMultipleObjectsEx(1, &mutex, INFINITE, QS_SENDMESSAGE,
                                                   MWMO_INPUTAVAILABLE)) == WAIT_OBJECT_0 + 1) {
            MSG message;
            PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | (QS_SENDMESSAGE << 16));
        }
        EXPECT_EQ(wake, WAIT_OBJECT_0);
        EXPECT_EQ(answered, 2);
        EXPECT_TRUE(ReleaseMutex(mutex));
        EXPECT_FALSE(ReleaseMutex(mutex)) << "it was taken once";
    }
    CloseHandle(mutex);
    CloseHandle(owned);
}

TEST_F(WaitingTest, APostedMessageDoesNotEndTheWaitForASentOne) {
    Open(IDD_BUTTONS);
    PostMessageW(dialog, WM_APP, 0, 0);
    EXPECT_EQ(MsgWaitForMultipleObjectsEx(0, nullptr, 20, QS_SENDMESSAGE, MWMO_INPUTAVAILABLE),
              WAIT_TIMEOUT);
}

}  // namespace
