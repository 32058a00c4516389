// What hosts compiled against the interfaces rely on: the order of slots and bases, and no more.
#include <gtest/gtest.h>

#include <QtCore/QMetaMethod>
#include <QtCore/QThread>

#include <thread>
#include <type_traits>

#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>
#include <KOVDoaHandle/KOVAudio/kovserver.h>

#include "streamtesting.h"

namespace {

using StreamTesting::objectSlots;
using StreamTesting::slotOf;

// The least that makes the interface an object.
class Server : public IKOVCoreServer
{
public:
    void start() override {}
    void close() override {}
};

template <typename Base, typename Derived>
std::ptrdiff_t offsetOf(Derived& object)
{
    return reinterpret_cast<char*>(static_cast<Base*>(&object)) - reinterpret_cast<char*>(&object);
}

TEST(IKOVCoreServer, HasItsSlotsInTheOrderThatHostsCall)
{
    EXPECT_EQ(slotOf(&IKOVCoreServer::start), 0U);
    EXPECT_EQ(slotOf(&IKOVCoreServer::close), 1U);
    EXPECT_EQ(slotOf(&IKOVCoreServer::isWorking), 2U);
    EXPECT_EQ(slotOf(&IKOVCoreServer::isValidThread), 3U);
}

TEST(IKOVCoreServer, HoldsOneIdBehindItsTable)
{
    EXPECT_EQ(sizeof(IKOVCoreServer), sizeof(void*) + sizeof(Qt::HANDLE));
    EXPECT_FALSE(std::has_virtual_destructor_v<IKOVCoreServer>);
}

TEST(IKOVCoreServer, DoesNotWorkUnlessADerivedClassSaysSo)
{
    Server server;

    EXPECT_FALSE(server.isWorking());
}

TEST(IKOVCoreServer, KnowsTheThreadThatConstructedIt)
{
    Server server;
    bool isValidElsewhere = true;

    std::thread([&] { isValidElsewhere = server.isValidThread(); }).join();

    EXPECT_TRUE(server.isValidThread());
    EXPECT_EQ(server.validThreadId(), QThread::currentThreadId());
    EXPECT_FALSE(isValidElsewhere);
}

TEST(IKOVServerReader, HasTwoSlotsAndNoDestructorAmongThem)
{
    EXPECT_EQ(slotOf(&IKOVServerReader::createReaderSource), 0U);
    EXPECT_EQ(slotOf(&IKOVServerReader::releaseReaderSource), 1U);
    EXPECT_EQ(sizeof(IKOVServerReader), sizeof(void*));
    EXPECT_FALSE(std::has_virtual_destructor_v<IKOVServerReader>);
}

TEST(IKOVServerReaderSource, HasTwoSlotsAndNoDestructorAmongThem)
{
    EXPECT_EQ(slotOf(&IKOVServerReaderSource::readData), 0U);
    EXPECT_EQ(slotOf(&IKOVServerReaderSource::onDataReady), 1U);
    EXPECT_EQ(sizeof(IKOVServerReaderSource), sizeof(void*));
    EXPECT_FALSE(std::has_virtual_destructor_v<IKOVServerReaderSource>);
}

TEST(KOVAudioSource, HasItsSlotsBehindThoseOfQObjectAndItsBasesInOrder)
{
    KOVAudioSource source(QStringLiteral("s"), 96000, 8);

    EXPECT_EQ(slotOf(&KOVAudioSource::readData), objectSlots);
    EXPECT_EQ(slotOf(&KOVAudioSource::onDataReady), objectSlots + 1);
    EXPECT_EQ(offsetOf<QObject>(source), 0);
    EXPECT_EQ(offsetOf<IKOVServerReaderSource>(source), static_cast<std::ptrdiff_t>(sizeof(QObject)));
    EXPECT_EQ(sizeof(KOVAudioSource), sizeof(QObject) + 2 * sizeof(void*));
}

TEST(KOVAudioSource, ShowsHostsOneSignalAndOneSlot)
{
    const QMetaObject& meta = KOVAudioSource::staticMetaObject;

    EXPECT_STREQ(meta.className(), "KOVAudioSource");
    EXPECT_EQ(meta.methodCount() - meta.methodOffset(), 2);
    EXPECT_EQ(meta.method(meta.indexOfMethod("readyRead()")).methodType(), QMetaMethod::Signal);
    EXPECT_EQ(meta.method(meta.indexOfMethod("onDataReady()")).methodType(), QMetaMethod::Slot);
}

}  // namespace
