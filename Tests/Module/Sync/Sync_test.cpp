#include "Module/Sync/Sync.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Module/Sync/Backup.h"
#include "Tests/support/LogRecorder.h"
#include "Tests/support/RecordingCallBack.h"

using testing::ElementsAre;

TEST(Factory, IsOneForTheProcess) {
    ISyncFactory* const factory = GetSyncFactory();
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(GetSyncFactory(), factory);
    EXPECT_EQ(CSync::GetInstance(), factory);
}

TEST(Factory, OpensTheLogEachTime) {
    ForgetLog();
    GetSyncFactory();
    CSync::GetInstance();
    EXPECT_THAT(OpenedLogs(), ElementsAre("Sync.log", "Sync.log"));
}

TEST(Factory, IsFoundByItsNameAtRunTime) {
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "GetSyncFactory"), reinterpret_cast<void*>(&GetSyncFactory));
}

TEST(Factory, HandsOutTheOneFacade) {
    EXPECT_EQ(GetSyncFactory()->GetBackup(), static_cast<IBackup*>(CBackup::GetInstance()));
}

TEST(SendCallBackSafe, PassesEverythingOn) {
    RecordingCallBack callback;
    char text[] = "text";
    SendCallBackSafe(&callback, kCallBackRestore, 1, 0xFFFFFFFFFFFFFFFFULL, text);
    ASSERT_EQ(callback.Events().size(), 1U);
    const RecordedEvent event = callback.Events()[0];
    EXPECT_EQ(event.type, 75);
    EXPECT_EQ(event.arg1, 1U);
    EXPECT_EQ(event.arg2, 0xFFFFFFFFFFFFFFFFULL);
    EXPECT_EQ(event.text, "text");
}

TEST(SendCallBackSafe, DoesNothingWithoutACallback) {
    SendCallBackSafe(nullptr, kCallBackBackup, 1, 2, nullptr);
}

TEST(SendCallBackSafe, CatchesNothing) {
    RecordingCallBack callback;
    callback.onEvent = [](const RecordedEvent&) { throw 5; };
    EXPECT_THROW(SendCallBackSafe(&callback, kCallBackBackup, 1, 2, nullptr), int);
}
