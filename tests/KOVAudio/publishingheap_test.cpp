// Publishing must not stall the worker in an allocator: this executable counts what every thread allocates.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include <KOVDoaHandle/KOVAudio/arrayplayer_p.h>
#include <KOVDoaHandle/KOVAudio/kovaudiosource.h>

#include "streamtesting.h"
#include "wavsets.h"

// Sanitizers bring operators of their own, which must not be mixed with these.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#    define KOVDOA_COUNTS_ALLOCATIONS 0
#else
#    define KOVDOA_COUNTS_ALLOCATIONS 1
#endif

namespace {

std::atomic<long> allocations{0};

}  // namespace

#if KOVDOA_COUNTS_ALLOCATIONS

namespace {

void* countedAllocation(std::size_t bytes, std::size_t alignment)
{
    ++allocations;
    void* const memory = std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

// Replaces the operators of the whole process, the library's calls included.
void* operator new(std::size_t bytes)
{
    return countedAllocation(bytes, alignof(std::max_align_t));
}
void* operator new[](std::size_t bytes)
{
    return countedAllocation(bytes, alignof(std::max_align_t));
}
void* operator new(std::size_t bytes, std::align_val_t alignment)
{
    return countedAllocation(bytes, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t bytes, std::align_val_t alignment)
{
    return countedAllocation(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept
{
    std::free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept
{
    std::free(memory);
}

#endif

namespace {

class PublishingHeap : public ::testing::Test
{
protected:
    PublishingHeap()
    {
        const StreamTesting::WavFolder folder;
        folder.writeSet(2);
        const auto recording = std::make_shared<KOVAudio::WavSet>(16, 96000, 1024);
        EXPECT_TRUE(recording->load(QString::fromUtf8(folder.path())));
        for (int i = 0; i < 4; ++i) {
            consumers.push_back(std::make_unique<KOVAudioSource>(QStringLiteral("c"), 96000, 16));
            sources->add(*consumers.back());
        }
        player = std::make_unique<KOVAudio::ArrayPlayer>(recording, sources, 0);
    }

    void SetUp() override
    {
        if (!KOVDOA_COUNTS_ALLOCATIONS) {
            GTEST_SKIP() << "another allocator is in place";
        }
    }

    long allocationsOfOnePublication()
    {
        const long before = allocations;
        player->publish();
        return allocations - before;
    }
    void drain()
    {
        for (const auto& consumer : consumers) {
            consumer->readData();
        }
    }

    const std::shared_ptr<KOVAudio::SourceList> sources = std::make_shared<KOVAudio::SourceList>();
    std::vector<std::unique_ptr<KOVAudioSource>> consumers;
    std::unique_ptr<KOVAudio::ArrayPlayer> player;
};

TEST(AllocationCounter, SeesWhatTheLibraryAllocates)
{
    if (!KOVDOA_COUNTS_ALLOCATIONS) {
        GTEST_SKIP() << "another allocator is in place";
    }
    const long before = allocations;
    const KOVAudioBuffer buffer;

    EXPECT_EQ(allocations - before, 1);
}

TEST_F(PublishingHeap, IsNotTouchedFromTheFirstBlockOnWhileQueuesFillAndDrain)
{
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(allocationsOfOnePublication(), 0);
    }
    for (int i = 0; i < 500; ++i) {
        drain();
        EXPECT_EQ(allocationsOfOnePublication(), 0);
    }
}

TEST_F(PublishingHeap, IsNotTouchedByRefusalsThatAreNotReported)
{
    const StreamTesting::Messages messages;
    for (int i = 0; i < 11; ++i) {
        player->publish();
    }
    ASSERT_EQ(messages.all().size(), 4U);

    for (int i = 0; i < 249; ++i) {
        EXPECT_EQ(allocationsOfOnePublication(), 0);
    }
}

TEST_F(PublishingHeap, IsNotTouchedForASourceThatWasDeleted)
{
    consumers.pop_back();

    EXPECT_EQ(allocationsOfOnePublication(), 0);
}

}  // namespace
