#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Module/BackupLib/BackupMgr.h"
#include "Tests/support/BackupBuilder.h"
#include "Tests/support/RecordingCallBack.h"
#include "Tests/support/TemporaryFolder.h"
#include "Tests/support/ToolScript.h"

/// A device that says what the test wants.
class FakeDevice : public IBaseDevice {
 public:
    std::string GetName() override { return Asked("name", name); }
    std::string GetSerialNumber() override { return Asked("serial", serialNumber); }
    std::string GetVersionString() override { return Asked("version", version); }
    int GetMajorVersion() override {
        Asked("major", "");
        return majorVersion;
    }
    std::string GetProductType() override { return Asked("product", productType); }
    std::string GetDeviceID() override { return Asked("id", id); }

    std::string name = "A phone";
    std::string serialNumber = "SERIAL1";
    std::string version = "17.4.1";
    int majorVersion = 17;
    std::string productType = "iPhone14,5";
    std::string id = "the-device";
    std::vector<std::string> asked;  ///< what was asked, in order
    std::function<void()> whenAskedForId;

 private:
    std::string Asked(const std::string& what, const std::string& answer) {
        asked.push_back(what);
        if (what == "id" && whenAskedForId) whenAskedForId();
        return answer;
    }
};

/// A job of the backup manager with a scripted tool.
class JobTest : public testing::Test {
 protected:
    JobTest();

    /// The device is of this layout's version.
    void Use(Layout layout);
    /// The tool makes this backup and says that it is done.
    void ToolMakes(BackupBuilder& backup);

    int Start(int type, int option = 0);

    /// The folder of the last job: the newest below the destination.
    std::string JobFolder() const;
    /// The device's backup in it.
    std::string DeviceFolder() const { return JobFolder() + "/" + device.id; }
    std::set<std::string> Files() const { return FilesBelow(DeviceFolder()); }

    CBackupMgr& manager = *CBackupMgr::GetInstance();
    Layout layout = Layout::kNew;
    TemporaryFolder destination;
    ToolScript tool;
    RecordingCallBack callback;
    FakeDevice device;
};

/// What a phone has, as far as the manager is concerned.
struct PhoneContent {
    explicit PhoneContent(BackupBuilder& backup);

    std::string messages;  ///< file IDs
    std::string attachment;
    std::string whatsapp;
    std::string whatsappMedia;
    std::string wechat;
    std::string wechatMedia;
    std::string contacts;
    std::string contactImages;
    std::string photo;
    std::string mail;
};
