// Keeps the registered callback; the engine's sources report through it.
#include <KOVDoaHandle/foundation/engine/messagehook.h>
#include <KOVDoaHandle/foundation/engine/messagehook_p.h>

#include <atomic>

namespace {

std::atomic<DoaMessageHandler> messageHandler{nullptr};

}  // namespace

void InstallDoaMessageHandler(DoaMessageHandler handler)
{
    messageHandler.store(handler);
}

void reportDoaMessage(const char* file, int line, const char* function, const char* message)
{
    if (const DoaMessageHandler handler = messageHandler.load()) {
        handler(file, line, function, message);
    }
}
