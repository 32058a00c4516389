// The resampler's plain exports: which numbers switch a flag on, and that each call reaches the object.
#include <KOVDoaHandle/KOVAudio/kovaudioresample.h>
#include <KOVDoaHandle/api/resampler.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <random>
#include <vector>

namespace {

struct Destroy
{
    void operator()(KOVAudioReSample* resampler) const { destoryReSampleHandle(resampler); }
    void operator()(vec_fp32* vector) const { destroy_vec_fp32(vector); }
};

using Handle = std::unique_ptr<KOVAudioReSample, Destroy>;
using Vector = std::unique_ptr<vec_fp32, Destroy>;

Vector vectorOf(const std::vector<float>& values)
{
    Vector vector(create_vec_fp32(static_cast<int>(values.size())));
    std::copy(values.begin(), values.end(), vector->data);
    return vector;
}

std::vector<float> valuesOf(const Vector& vector)
{
    return {vector->data, vector->data + vector->len};
}

std::vector<float> noise(std::size_t count)
{
    std::mt19937 random(2);
    std::uniform_real_distribution<float> uniform(-1.0F, 1.0F);
    std::vector<float> samples(count);
    std::generate(samples.begin(), samples.end(), [&] { return uniform(random); });
    return samples;
}

TEST(ResamplerExports, CreationSwitchesAFlagOnForExactlyOne)
{
    for (const int number : {2, -1, 0, 256, 257}) {
        const Handle handle(createReSampleHandle(96000, 48000, 0.0F, number, number));
        EXPECT_EQ(AudioReSampleGetRmAliasingEnable(handle.get()), 0) << number;
        EXPECT_EQ(AudioReSampleGetRmDCEnable(handle.get()), 0) << number;
    }
    const Handle aliasing(createReSampleHandle(96000, 48000, 0.0F, 1, 2));
    const Handle dc(createReSampleHandle(96000, 48000, 0.0F, 2, 1));
    EXPECT_EQ(AudioReSampleGetRmAliasingEnable(aliasing.get()), 1);
    EXPECT_EQ(AudioReSampleGetRmDCEnable(aliasing.get()), 0);
    EXPECT_EQ(AudioReSampleGetRmAliasingEnable(dc.get()), 0);
    EXPECT_EQ(AudioReSampleGetRmDCEnable(dc.get()), 1);
}

TEST(ResamplerExports, SettersSwitchAFlagOnForEveryNumberButZero)
{
    const Handle handle(createReSampleHandle(96000, 48000, 0.0F, 0, 0));

    for (const int number : {2, 1, -1, 256, 65536}) {
        AudioReSampleSetRmDCEnable(handle.get(), number);
        AudioReSampleSetRmAliasingEnable(handle.get(), number);
        EXPECT_EQ(AudioReSampleGetRmDCEnable(handle.get()), 1) << number;
        EXPECT_EQ(AudioReSampleGetRmAliasingEnable(handle.get()), 1) << number;
        AudioReSampleSetRmDCEnable(handle.get(), 0);
        EXPECT_EQ(AudioReSampleGetRmDCEnable(handle.get()), 0) << number;
        EXPECT_EQ(AudioReSampleGetRmAliasingEnable(handle.get()), 1) << number;
        AudioReSampleSetRmAliasingEnable(handle.get(), 0);
        EXPECT_EQ(AudioReSampleGetRmAliasingEnable(handle.get()), 0) << number;
    }
}

TEST(ResamplerExports, DestroyingANullHandleDoesNothing)
{
    EXPECT_NO_FATAL_FAILURE(destoryReSampleHandle(nullptr));
}

TEST(ResamplerExports, TheGainReachesTheOutput)
{
    const Handle handle(createReSampleHandle(1, 1, 20.0F, 0, 0));
    const auto in = vectorOf({1.0F, 2.0F});
    const auto out = vectorOf({0.0F, 0.0F});

    AudioReSampleDoReSample(handle.get(), in.get(), out.get());
    EXPECT_EQ(AudioReSampleGetGain(handle.get()), 20.0F);
    EXPECT_EQ(valuesOf(out), (std::vector<float>{10.0F, 20.0F}));

    AudioReSampleSetGain(handle.get(), 40.0F);
    AudioReSampleDoReSample(handle.get(), in.get(), out.get());
    EXPECT_EQ(AudioReSampleGetGain(handle.get()), 40.0F);
    EXPECT_EQ(valuesOf(out), (std::vector<float>{100.0F, 200.0F}));
}

TEST(ResamplerExports, TakeTheCountsFromTheVectors)
{
    const Handle handle(createReSampleHandle(96000, 48000, 0.0F, 0, 0));
    const auto in = vectorOf({0.0F, 1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F, 7.0F});
    const auto out = vectorOf(std::vector<float>(8, -1.0F));
    const auto fast = vectorOf(std::vector<float>(3, -1.0F));

    AudioReSampleDoReSample(handle.get(), in.get(), out.get());
    AudioFastReSample(in.get(), 96000, fast.get(), 48000);

    EXPECT_EQ(valuesOf(out), (std::vector<float>{0.0F, 2.0F, 4.0F, 6.0F, -1.0F, -1.0F, -1.0F, -1.0F}));
    EXPECT_EQ(valuesOf(fast), (std::vector<float>{0.0F, 2.0F, 4.0F}));
}

TEST(ResamplerExports, DoWhatTheObjectDoes)
{
    const Handle handle(createReSampleHandle(96000, 22050, -3.0F, 1, 1));
    KOVAudioReSample object(96000, 22050, -3.0F, true, true);
    const auto in = vectorOf(noise(500));
    const auto out = vectorOf(std::vector<float>(200, -1.0F));
    std::vector<float> expected(200, -1.0F);

    AudioReSampleDoReSample(handle.get(), in.get(), out.get());
    object.doReSample(in->data, 500, expected.data(), 200);

    EXPECT_EQ(valuesOf(out), expected);
}

TEST(ResamplerExports, AResetStartsTheStreamAfresh)
{
    const Handle handle(createReSampleHandle(96000, 22050, 0.0F, 1, 1));
    const auto in = vectorOf(noise(500));
    const auto first = vectorOf(std::vector<float>(100));
    const auto carriedOn = vectorOf(std::vector<float>(100));
    const auto afresh = vectorOf(std::vector<float>(100));

    AudioReSampleDoReSample(handle.get(), in.get(), first.get());
    AudioReSampleDoReSample(handle.get(), in.get(), carriedOn.get());
    AudioReSampleResetFilter(handle.get());
    AudioReSampleDoReSample(handle.get(), in.get(), afresh.get());

    EXPECT_NE(valuesOf(carriedOn), valuesOf(first));
    EXPECT_EQ(valuesOf(afresh), valuesOf(first));
}

}  // namespace
