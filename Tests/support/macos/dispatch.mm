#include <Block.h>
#include <dispatch/dispatch.h>
#include <pthread.h>

#include <csignal>
#include <cstdlib>

namespace {

using Block = void (^)(void);

void* Run(void* context) {
    const auto block = reinterpret_cast<Block>(context);
    block();
    Block_release(block);
    return nullptr;
}

}  // namespace

extern "C" dispatch_queue_t dispatch_get_global_queue(long /*priority*/, unsigned long /*flags*/) {
    static char queue;
    return reinterpret_cast<dispatch_queue_t>(&queue);
}

extern "C" void dispatch_async(dispatch_queue_t /*queue*/, Block block) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_attr_t detached;
    pthread_attr_init(&detached);
    pthread_attr_setdetachstate(&detached, PTHREAD_CREATE_DETACHED);
    pthread_t thread{};
    pthread_sigmask(SIG_SETMASK, &all, &before);  // a thread inherits its maker's mask
    if (pthread_create(&thread, &detached, Run, reinterpret_cast<void*>(Block_copy(block))) != 0)
        std::abort();
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    pthread_attr_destroy(&detached);
}
