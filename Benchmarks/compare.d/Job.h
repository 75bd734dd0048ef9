#pragma once

#include <string>

#include "Module/BackupLib/BaseDevice.h"

/// A device of either kind that answers at once.
class BenchDevice : public IBaseDevice {
 public:
    explicit BenchDevice(bool old) : m_old(old) {}
    std::string GetName() override { return "bench"; }
    std::string GetSerialNumber() override { return "bench"; }
    std::string GetVersionString() override { return m_old ? "9.3.5" : "17.4.1"; }
    int GetMajorVersion() override { return m_old ? 9 : 17; }
    std::string GetProductType() override { return "bench"; }
    std::string GetDeviceID() override { return "device"; }

 private:
    bool m_old;
};

/// What the runner waits for after each run, whatever the tool did.
constexpr double kFixedPauseSeconds = 0.2;

/// Drops what is written to descriptor 2 meanwhile: the programs that the library calls to end tools say
/// there what they did not find.
class Quiet {
 public:
    Quiet();
    ~Quiet();
    Quiet(const Quiet&) = delete;
    Quiet& operator=(const Quiet&) = delete;

 private:
    int m_before;
};

/// Runs a small job for messages through the backup manager of this process, so that what belongs to a job
/// can be called afterwards. \return the folder of the device's backup, which the manager now takes for its
/// own.
std::string RunSmallJob(const std::string& destination, bool oldLayout);
