#include "Tools/devicesim/Options.h"

#include <CLI/CLI.hpp>
#include <sstream>
#include <vector>

#include "Host/SampleDevice/SampleDeviceFolder.h"

namespace devicesim {
namespace {

constexpr char kExample[] =
    "Example:\n"
    "  devicesim --socket /tmp/devices.sock --devices Host/Resources/SampleDevices &\n"
    "  USBMUXD_SOCKET_ADDRESS=UNIX:/tmp/devices.sock kruteinctl devices\n"
    "SIGHUP looks into the folder again, SIGTERM and SIGINT end it.";

}  // namespace

std::optional<Simulator::Settings> ParseOptions(int count, const char* const* words, std::string& text) {
    Simulator::Settings settings;
    std::vector<std::string> faults;
    CLI::App app("devicesim: simulates a device daemon with devices behind it", "devicesim");
    app.add_option("--socket", settings.socket, "Path of the UNIX socket to listen on, 107 bytes at most")
        ->required();
    app.add_option("--devices", settings.devices, "Folder of the devices' descriptions, <udid>.json")
        ->envname(krutein::kSampleDevicesVariable)
        ->required();
    app.add_option("--fault", faults, "What goes wrong, as listed below; may be given several times")
        ->take_all();
    app.footer(Faults::Help() + "\n\n" + kExample);
    try {
        app.parse(count, words);
        for (const std::string& fault : faults)
            settings.faults.Add(fault);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream errors;
        if (app.exit(error, out, errors) != 0) throw UsageError(errors.str());
        text = out.str();
        return std::nullopt;
    } catch (const FaultError& error) {
        throw UsageError(std::string(error.what()) + "\n");
    }
    return settings;
}

}  // namespace devicesim
