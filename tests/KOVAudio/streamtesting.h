// Helpers of the tests of buffers, sources and the array reader.
#ifndef KOVDOA_TESTS_STREAMTESTING_H
#define KOVDOA_TESTS_STREAMTESTING_H

#include <QtCore/QString>
#include <QtCore/QVariant>
#include <QtCore/QtGlobal>

#include <cstdint>
#include <cstring>
#include <mutex>
#include <vector>

#include <KOVDoaHandle/KOVAudio/kovaudiobuffer.h>

namespace StreamTesting {

struct Message
{
    QtMsgType type;
    QString text;
    QString category;
    QString file;
};

// Records every message as long as it lives. One at a time.
class Messages
{
public:
    Messages() : m_before(qInstallMessageHandler(handle)) { current() = this; }
    ~Messages()
    {
        qInstallMessageHandler(m_before);
        current() = nullptr;
    }
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;

    std::vector<Message> all() const
    {
        const std::lock_guard lock(m_mutex);
        return m_messages;
    }

    int count(QtMsgType type, const QString& text) const
    {
        int found = 0;
        for (const Message& message : all()) {
            found += message.type == type && message.text == text ? 1 : 0;
        }
        return found;
    }

private:
    static Messages*& current()
    {
        static Messages* messages = nullptr;
        return messages;
    }

    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        const std::lock_guard lock(current()->m_mutex);
        current()->m_messages.push_back({type, text, QString(context.category), QString(context.file)});
    }

    mutable std::mutex m_mutex;
    std::vector<Message> m_messages;
    QtMessageHandler m_before;
};

// Number of the slot that a virtual member has in the table of its class: what a host compiled long ago calls.
template <typename Member>
std::uintptr_t slotOf(Member member)
{
    std::uintptr_t offsetPlusOne = 0;
    std::memcpy(&offsetPlusOne, &member, sizeof offsetPlusOne);
    return (offsetPlusOne - 1) / sizeof(void*);
}

// Slots that QObject itself has.
constexpr std::uintptr_t objectSlots = 12;

inline KOVAudioBuffer makeBlock(float timeStamp, int channels = 2, int samples = 3)
{
    KOVAudioBuffer block;
    block.init(channels, samples);
    for (int channel = 0; channel < channels; ++channel) {
        for (int i = 0; i < samples; ++i) {
            block.data(channel)[i] = timeStamp + static_cast<float>(100 * channel + i);
        }
    }
    block.setTimeStamp(timeStamp);
    return block;
}

}  // namespace StreamTesting

#endif
