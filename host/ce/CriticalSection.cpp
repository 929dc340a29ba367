// The lock of platform/wince.h. Built on every target: it uses nothing but the standard library.
//
// Not a std::recursive_mutex, because destroying one that is owned is undefined, while here it is an everyday
// event: the view may still own its locks when it goes.
#include "platform/wince.h"

#include <condition_variable>
#include <mutex>
#include <thread>

struct CriticalSection::Impl {
    std::mutex mutex;
    std::condition_variable freed;
    std::thread::id owner; // nobody while count is 0
    int count = 0;

    [[nodiscard]] bool IsOpenToMe() const { return count == 0 || owner == std::this_thread::get_id(); }
    void Take() {
        owner = std::this_thread::get_id();
        ++count;
    }
};

CriticalSection::CriticalSection() : impl_(new Impl) {}

CriticalSection::~CriticalSection() {
    delete impl_;
}

void CriticalSection::Enter() {
    std::unique_lock lock(impl_->mutex);
    impl_->freed.wait(lock, [this] { return impl_->IsOpenToMe(); });
    impl_->Take();
}

bool CriticalSection::TryEnter() {
    const std::lock_guard lock(impl_->mutex);
    if (!impl_->IsOpenToMe())
        return false;
    impl_->Take();
    return true;
}

void CriticalSection::Leave() {
    const std::lock_guard lock(impl_->mutex);
    if (impl_->count == 0 || impl_->owner != std::this_thread::get_id())
        return; // one Leave too many, or a foreign one: never free what another thread holds
    if (--impl_->count == 0)
        impl_->freed.notify_one();
}
