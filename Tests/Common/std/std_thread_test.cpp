#include "Common/std/std_thread.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>

namespace {

void* Count(void* counter) {
    static_cast<std::atomic<int>*>(counter)->fetch_add(1);
    return nullptr;
}

void* SleepLong(void* /*unused*/) {
    sleep(600);
    return nullptr;
}

}  // namespace

TEST(Thread, RunsAndIsJoined) {
    std::atomic<int> counter{0};
    pthread_t thread{};
    ASSERT_TRUE(std_thread_create(Count, &counter, &thread));
    EXPECT_NE(thread, pthread_t{});
    EXPECT_TRUE(std_thread_wait(thread));
    EXPECT_EQ(counter, 1);
}

TEST(Thread, IsCancelledWhereItWaits) {
    pthread_t thread{};
    ASSERT_TRUE(std_thread_create(SleepLong, nullptr, &thread));
    EXPECT_TRUE(std_thread_kill(thread));
    EXPECT_TRUE(std_thread_wait(thread));
}

TEST(Thread, AZeroHandleIsRefused) {
    EXPECT_FALSE(std_thread_kill(pthread_t{}));
    EXPECT_FALSE(std_thread_wait(pthread_t{}));
}

TEST(Lock, ExcludesOtherThreads) {
    pthread_mutex_t lock;
    ASSERT_EQ(std_thread_lock_init(&lock), 0);
    EXPECT_EQ(std_thread_lock_enter(&lock), 0);
    EXPECT_NE(pthread_mutex_trylock(&lock), 0);
    EXPECT_EQ(std_thread_lock_leave(&lock), 0);
    EXPECT_EQ(pthread_mutex_trylock(&lock), 0);
    EXPECT_EQ(std_thread_lock_leave(&lock), 0);
    EXPECT_EQ(std_thread_lock_delete(&lock), 0);
}
