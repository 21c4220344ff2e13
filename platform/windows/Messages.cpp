// Messages between and within threads, and the loops that handle them.

#include <algorithm>
#include <utility>

#include "Announce.h"
#include "Call.h"
#include "Desktop.h"

namespace platform {

Desktop::Queue& Desktop::OwnQueue() {
    return m_queues[Machine::Current().scheduler.CurrentThread()];
}

LRESULT Desktop::Send(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    const std::shared_ptr<Window> window = Find(handle);
    if (!window) return 0;
    Scheduler& scheduler = Machine::Current().scheduler;
    const unsigned self = scheduler.CurrentThread();
    if (window->thread == self) return window->OnMessage(message, wParam, lParam);

    const auto sent = std::make_shared<SentMessage>();
    *sent = {handle, message, wParam, lParam};
    AnnounceRelease(sent.get());
    Queue& queue = m_queues[window->thread];
    queue.sent.push_back(sent);
    queue.fresh |= QS_SENDMESSAGE;
    // Meanwhile this thread answers what others send to it.
    while (!sent->done) {
        const auto ready = [&] { return sent->done || !m_queues[self].sent.empty(); };
        // Without a time-out this fails only when the machine has ended.
        if (!scheduler.BlockUntil("SendMessageW", ready)) return 0;
        if (!sent->done) HandleSent();
    }
    AnnounceAcquire(sent.get());
    return sent->result;
}

bool Desktop::HandleSent() {
    Queue& queue = OwnQueue();
    if (queue.sent.empty()) return false;
    const std::shared_ptr<SentMessage> sent = queue.sent.front();
    queue.sent.pop_front();
    AnnounceAcquire(sent.get());
    sent->result = Send(sent->window, sent->message, sent->wParam, sent->lParam);
    AnnounceRelease(sent.get());
    sent->done = true;
    return true;
}

bool Desktop::Post(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) {
    const std::shared_ptr<Window> window = Find(handle);
    if (!window) return false;
    const auto now = static_cast<DWORD>(Machine::Current().scheduler.Now());
    Queue& queue = m_queues[window->thread];
    queue.posted.push_back({handle, message, wParam, lParam, now, {}});
    queue.fresh |= QS_POSTMESSAGE;
    AnnounceRelease(&queue);
    return true;
}

void Desktop::PostQuit(int exitCode) {
    OwnQueue().quit = exitCode;
}

LRESULT Desktop::Dispatch(const MSG& message) {
    return Send(message.hwnd, message.message, message.wParam, message.lParam);
}

bool Desktop::Filter::operator()(const MSG& message) const {
    if (window != nullptr && message.hwnd != window) return false;
    return (first == 0 && last == 0) || (message.message >= first && message.message <= last);
}

std::optional<MSG> Desktop::Take(HWND window, UINT first, UINT last, bool remove) {
    Queue& queue = OwnQueue();
    const auto found =
        std::find_if(queue.posted.begin(), queue.posted.end(), Filter{window, first, last});
    if (found == queue.posted.end()) return std::nullopt;
    AnnounceAcquire(&queue);
    const MSG message = *found;
    if (remove) queue.posted.erase(found);
    return message;
}

bool Desktop::HasPosted(unsigned thread, HWND window, UINT first, UINT last) const {
    const auto queue = m_queues.find(thread);
    return queue != m_queues.end() &&
           std::any_of(queue->second.posted.begin(), queue->second.posted.end(),
                       Filter{window, first, last});
}

bool Desktop::HasSentOrQuit(unsigned thread) const {
    const auto queue = m_queues.find(thread);
    return queue != m_queues.end() && (!queue->second.sent.empty() || queue->second.quit);
}

std::optional<int> Desktop::TakeQuit() {
    return std::exchange(OwnQueue().quit, std::nullopt);
}

UINT Desktop::Status(unsigned thread, bool freshOnly) const {
    const auto found = m_queues.find(thread);
    if (found == m_queues.end()) return 0;
    const Queue& queue = found->second;
    const UINT waiting = (queue.sent.empty() ? 0U : QS_SENDMESSAGE) |
                         (queue.posted.empty() && !queue.quit ? 0U : QS_POSTMESSAGE);
    return freshOnly ? waiting & queue.fresh : waiting;
}

void Desktop::ForgetFresh() {
    OwnQueue().fresh = 0;
}

HWND Desktop::Focus() const {
    const auto queue = m_queues.find(Machine::Current().scheduler.CurrentThread());
    return queue == m_queues.end() ? nullptr : queue->second.focus;
}

void Desktop::SetFocus(HWND window) {
    const HWND before = std::exchange(OwnQueue().focus, window);
    if (before == window) return;
    Send(before, WM_KILLFOCUS, reinterpret_cast<WPARAM>(window));
    Send(window, WM_SETFOCUS, reinterpret_cast<WPARAM>(before));
}

bool Desktop::WaitWithUser(const char* call, const std::function<bool()>& ready,
                           std::optional<Scheduler::Milliseconds> due, bool& asked) {
    Machine& machine = Machine::Current();
    const Scheduler::Wake wake = machine.scheduler.BlockIdle(call, ready, due, asked);
    if (wake != Scheduler::Wake::UserTurn) {
        asked = false;
        return wake == Scheduler::Wake::Ready;
    }
    const QuietScope quiet;
    asked = machine.user == nullptr || !machine.user->OnIdle();
    return true;
}

void Desktop::RunLoop(const char* call, const std::function<bool()>& done,
                      const std::function<bool(const MSG&)>& handle) {
    const unsigned self = Machine::Current().scheduler.CurrentThread();
    const auto ready = [&] {
        return HasSentOrQuit(self) || HasPosted(self, nullptr, 0, 0) || done();
    };
    bool asked = false;
    while (!done() && !m_queues[self].quit) {
        if (HandleSent()) continue;
        if (const std::optional<MSG> message = Take(nullptr, 0, 0, true)) {
            if (!handle || !handle(*message)) Dispatch(*message);
        } else if (!WaitWithUser(call, ready, std::nullopt, asked)) {
            return;
        }
    }
    ForgetFresh();
}

}  // namespace platform
