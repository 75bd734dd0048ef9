#include "Host/Archiver/contents/Contents.h"

namespace krutein {
namespace {

class FileCounter : public ContentReceiver {
 public:
    int Count() const { return m_count; }

    void OnFile(const DeviceFile& /*file*/, FileBytes /*bytes*/) override { ++m_count; }
    void OnDatabase(const DeviceFile& /*file*/, const FillDatabase& /*fill*/) override { ++m_count; }
    void OnLink(const DeviceFile& /*link*/, const std::string& /*target*/) override {}

 private:
    int m_count = 0;
};

}  // namespace

void PlayContents(const SampleDevice& device, ContentReceiver& receiver) {
    PlaySettings(device, receiver);
    PlayContacts(device, receiver);
    PlayMessages(device, receiver);
    PlayWhatsApp(device, receiver);
    PlayWeChat(device, receiver);
    PlayPhotos(device, receiver);
    PlayOtherFiles(device, receiver);
}

int CountFiles(const SampleDevice& device) {
    FileCounter counter;
    PlayContents(device, counter);
    return counter.Count();
}

}  // namespace krutein
