// The list of sources, where one is deleted without being taken back and another comes to stand at its address.
#include <gtest/gtest.h>

#include <memory>

#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/sourcelist_p.h>

#include "streamtesting.h"

namespace {

using StreamTesting::makeBlock;
using StreamTesting::Messages;

class SourcesAtOneAddress : public ::testing::Test
{
protected:
    SourcesAtOneAddress()
    {
        KOVAudioSource* const former = makeSource();
        sources.add(*former);
        std::destroy_at(former);
        source = makeSource();
        sources.add(*source);
    }
    ~SourcesAtOneAddress() override { std::destroy_at(source); }

    // Number of the blocks that wait, found by filling the queue up: it takes ten, and reports the next.
    int waitingBlocks()
    {
        const Messages messages;
        int room = -1;
        do {
            source->appendData(makeBlock(0.0F));
            ++room;
        } while (messages.all().empty());
        return 10 - room;
    }

    KOVAudio::SourceList sources;
    KOVAudioSource* source = nullptr;

private:
    KOVAudioSource* makeSource()
    {
        return std::construct_at(reinterpret_cast<KOVAudioSource*>(m_place), QStringLiteral("s"), 96000, 2);
    }

    alignas(KOVAudioSource) unsigned char m_place[sizeof(KOVAudioSource)];
};

TEST_F(SourcesAtOneAddress, GiveTheNewOneEachBlockOnce)
{
    sources.append(makeBlock(1.0F));
    sources.append(makeBlock(2.0F));

    EXPECT_EQ(waitingBlocks(), 2);
}

TEST_F(SourcesAtOneAddress, GiveTheNewOneNothingAfterItWasRemoved)
{
    sources.remove(source);
    sources.append(makeBlock(1.0F));

    EXPECT_EQ(waitingBlocks(), 0);
}

}  // namespace
