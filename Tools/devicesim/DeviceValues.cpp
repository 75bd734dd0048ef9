#include "Tools/devicesim/DeviceValues.h"

#include <fmt/format.h>

#include <algorithm>

namespace devicesim {
namespace {

/// Any key serves: it goes into the certificate that the client makes when it pairs, and nothing is
/// encrypted with it.
constexpr char kDevicePublicKey[] =
    "-----BEGIN RSA PUBLIC KEY-----\n"
    "MIIBCgKCAQEAqcST2xFNUhOts2kiCUgu8Fcv8teyvqe2ZoTp1FbwrGPFPoRwJkB5\n"
    "zIfyj0X0h8NIieod7CECD9AwIKUWl1tCsMR2+SDDl+Ypq/yKz0P0H1nWQVkJF9Y/\n"
    "KBlLzXOS/Ir8mcr+/ot0DgrDgu8AaxWTAt0ARYLEBydGBF/0VuXu6qhAu3aQ+iuK\n"
    "/4yaVTqwAWJmFeUEvY29LkGdBON9tP8bncJLvTfUpKd2Zzo64Y40KKAVlxg6OZcm\n"
    "YJyxiQr/eRGjq3S7+IDLVYMKaF+ZayNlD6spY9TsUgutfSrcnZF1iSV9VGCkBPd2\n"
    "yhfGRIRbBoIJ3TByDkxWisPsfcfkPK/MJwIDAQAB\n"
    "-----END RSA PUBLIC KEY-----\n";

constexpr std::uint64_t kSystemBytes = 10'000'000'000;
constexpr std::uint64_t kBatteryPercent = 87;

std::uint64_t Unsigned(std::int64_t number) {
    return static_cast<std::uint64_t>(number);
}

/// "iPhone" of "iPhone14,5".
std::string ClassOf(const std::string& productType) {
    return productType.substr(0, productType.find_first_of("0123456789"));
}

Plist GlobalValues(const Device& device) {
    const krutein::SampleDevice& facts = device.Facts();
    Plist values;
    values.Set("ActivationState", "Activated")
        .Set("BuildVersion", facts.buildVersion)
        .Set("DeviceClass", ClassOf(facts.productType))
        .Set("DeviceName", facts.name)
        .SetData("DevicePublicKey", kDevicePublicKey)
        .Set("HostAttached", true)
        .Set("PasswordProtected", false)
        .Set("ProductName", "iPhone OS")
        .Set("ProductType", facts.productType)
        .Set("ProductVersion", facts.systemVersion)
        .Set("SerialNumber", facts.serialNumber)
        .Set("UniqueDeviceID", facts.udid)
        .Set("WiFiAddress", fmt::format("02:00:00:00:00:{:02x}", device.Number() & 0xFFU));
    if (!facts.phoneNumber.empty()) values.Set("PhoneNumber", facts.phoneNumber);
    return values;
}

Plist DiskUsage(const Device& device) {
    const std::uint64_t total = Unsigned(device.Facts().disk.totalBytes);
    const std::uint64_t available = Unsigned(device.Facts().disk.availableBytes);
    const std::uint64_t system = std::min(kSystemBytes, total - available);
    Plist values;
    values.Set("AmountDataAvailable", available)
        .Set("AmountDataReserved", std::uint64_t{0})
        .Set("TotalDataAvailable", available)
        .Set("TotalDataCapacity", total - system)
        .Set("TotalDiskCapacity", total)
        .Set("TotalSystemAvailable", std::uint64_t{0})
        .Set("TotalSystemCapacity", system);
    return values;
}

Plist Battery() {
    Plist values;
    values.Set("BatteryCurrentCapacity", kBatteryPercent)
        .Set("BatteryIsCharging", true)
        .Set("ExternalConnected", true)
        .Set("FullyCharged", false);
    return values;
}

Plist International() {
    Plist values;
    values.Set("Keyboard", "en_US").Set("Language", "en").Set("Locale", "en_US");
    return values;
}

}  // namespace

std::optional<Plist> ValuesOf(const Device& device, const std::string& domain) {
    if (domain.empty()) return GlobalValues(device);
    if (domain == "com.apple.disk_usage") return DiskUsage(device);
    if (domain == "com.apple.mobile.battery") return Battery();
    if (domain == "com.apple.international") return International();
    return std::nullopt;
}

}  // namespace devicesim
