// The shapes that hosts are compiled against.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "Module/Sync/Backup.h"
#include "Module/Sync/SyncFactory.h"

namespace {

/// The slot of a virtual function in its class's table: the C++ ABI of all our platforms keeps it in the
/// pointer to member, as one more than its byte offset.
template <typename Member>
std::size_t Slot(Member member) {
    std::uintptr_t word = 0;
    static_assert(sizeof member >= sizeof word);
    std::memcpy(&word, &member, sizeof word);
    EXPECT_EQ(word % 2, 1U) << "not virtual";
    return (word - 1) / sizeof(void*);
}

/// An object that counts how often the complete-object (or deleting) destructor in a slot was called.
using Destructor = void (*)(void*);

template <typename Object>
Destructor* TableOf(Object* object) {
    Destructor* table = nullptr;
    std::memcpy(&table, static_cast<void*>(object), sizeof table);
    return table;
}

int g_destroyed = 0;

struct Factory : ISyncFactory {
    IDeviceInfo* GetDeviceInfo(const char* /*udid*/) override { return nullptr; }
    IBackup* GetBackup() override { return nullptr; }
    ~Factory() override { ++g_destroyed; }
};

struct Backup : IBackup {
    void StartBackup(const char* /*u*/, const char* /*f*/, CSyncCallBack* /*c*/) override {}
    void StopBackup(CSyncCallBack* /*c*/) override {}
    void StartRestore(const char* /*u*/, const char* /*f*/, CSyncCallBack* /*c*/) override {}
    void StopRestore(CSyncCallBack* /*c*/) override {}
    long long GetBackupSize(const char* /*u*/, const char* /*f*/) override { return 0; }
    ~Backup() override { ++g_destroyed; }
};

struct Device : IDeviceInfo {
    unsigned long long GetAvailableSize() override { return 0; }
    unsigned long long GetUsedSize() override { return 0; }
    unsigned long long GetDiskSize() override { return 0; }
    void GetDeviceName(std::function<void(const char*)> /*r*/) override {}
    void GetDeviceType(std::function<void(const char*)> /*r*/) override {}
    void GetIOSVersion(std::function<void(const char*)> /*r*/) override {}
    ~Device() override { ++g_destroyed; }
};

/// Shows that the complete-object and the deleting destructor stand in this slot and the next one.
template <typename Object>
void ExpectDestructorPairAt(std::size_t slot) {
    g_destroyed = 0;
    alignas(Object) unsigned char room[sizeof(Object)];
    auto* const inPlace = new (room) Object;
    TableOf(inPlace)[slot](inPlace);
    EXPECT_EQ(g_destroyed, 1);
    auto* const onHeap = new Object;
    TableOf(onHeap)[slot + 1](onHeap);
    EXPECT_EQ(g_destroyed, 2);
}

}  // namespace

TEST(Slots, OfTheFactory) {
    EXPECT_EQ(Slot(&ISyncFactory::GetDeviceInfo), 0U);
    EXPECT_EQ(Slot(&ISyncFactory::GetBackup), 1U);
    ExpectDestructorPairAt<Factory>(2);
}

TEST(Slots, OfTheBackupInterface) {
    EXPECT_EQ(Slot(&IBackup::StartBackup), 0U);
    EXPECT_EQ(Slot(&IBackup::StopBackup), 1U);
    EXPECT_EQ(Slot(&IBackup::StartRestore), 2U);
    EXPECT_EQ(Slot(&IBackup::StopRestore), 3U);
    EXPECT_EQ(Slot(&IBackup::GetBackupSize), 4U);
    ExpectDestructorPairAt<Backup>(5);
}

TEST(Slots, OfTheDeviceInterface) {
    EXPECT_EQ(Slot(&IDeviceInfo::GetAvailableSize), 0U);
    EXPECT_EQ(Slot(&IDeviceInfo::GetUsedSize), 1U);
    EXPECT_EQ(Slot(&IDeviceInfo::GetDiskSize), 2U);
    EXPECT_EQ(Slot(&IDeviceInfo::GetDeviceName), 3U);
    EXPECT_EQ(Slot(&IDeviceInfo::GetDeviceType), 4U);
    EXPECT_EQ(Slot(&IDeviceInfo::GetIOSVersion), 5U);
    ExpectDestructorPairAt<Device>(6);
}

TEST(Slots, OfTheCallbacks) {
    EXPECT_EQ(Slot(&CCallBack::OnStateChange), 0U);
    EXPECT_EQ(Slot(&CSyncCallBack::OnStateChange), 0U);
    EXPECT_FALSE(std::has_virtual_destructor_v<CCallBack>);
    EXPECT_FALSE(std::has_virtual_destructor_v<CSyncCallBack>);
}

TEST(Slots, OfTheFacade) {
    EXPECT_EQ(Slot(&CBackup::StartBackup), 0U);
    EXPECT_EQ(Slot(&CBackup::GetBackupSize), 4U);
    EXPECT_EQ(Slot(&CBackup::OnStateChange), 7U) << "behind the five operations and the two destructors";
}

TEST(Slots, TheFacadeIsABackupFirstAndACallbackSecond) {
    CBackup* const facade = CBackup::GetInstance();
    const auto* const whole = reinterpret_cast<const char*>(facade);
    EXPECT_EQ(reinterpret_cast<const char*>(static_cast<IBackup*>(facade)), whole);
    EXPECT_EQ(reinterpret_cast<const char*>(static_cast<CCallBack*>(facade)), whole + sizeof(void*));
}

TEST(Slots, CallBackTypesAre32BitsWide) {
    EXPECT_EQ(sizeof(CallBackType), 4U);
    EXPECT_EQ(kCallBackBackupInfo, 30);
    EXPECT_EQ(kCallBackBackup, 73);
    EXPECT_EQ(kCallBackRestore, 75);
    EXPECT_EQ(kCallBackChangePassword, 2001);
}
