// The engine is a library of its own, and a host may put functions of its own in the place of the engine's. This
// program defines two of them; the library must call these.
#include <gtest/gtest.h>

#include <KOVDoaHandle/api/containers.h>
#include <KOVDoaHandle/api/results.h>
#include <KOVDoaHandle/imaging/engmapresult.h>

namespace {

int createdLengths = 0;
int createCalls = 0;
int destroyCalls = 0;

}  // namespace

vec_fp32* create_vec_fp32(int len)
{
    createdLengths += len;
    ++createCalls;
    return new vec_fp32{len, new float[static_cast<std::size_t>(len)]()};
}

void destroy_vec_fp32(vec_fp32* vector)
{
    ++destroyCalls;
    delete[] vector->data;
    delete vector;
}

namespace {

class Interposition : public ::testing::Test
{
protected:
    Interposition() { createdLengths = createCalls = destroyCalls = 0; }
};

TEST_F(Interposition, ReachesTheContainerExports)
{
    vec_fp32* vector = createVecFp32(12);

    EXPECT_EQ(createCalls, 1);
    EXPECT_EQ(createdLengths, 12);

    destroyVecFp32(vector);
    EXPECT_EQ(destroyCalls, 1);
}

TEST_F(Interposition, ReachesTheFrames)
{
    EngMapResult* frame = createResultHandle(4, 4, 0, 0, 64);

    EXPECT_EQ(createCalls, 1);
    EXPECT_EQ(createdLengths, 33);
    EXPECT_EQ(frame->PowerSpec->len, 33);

    releaseResultHandle(frame);
    EXPECT_EQ(destroyCalls, 1);
}

}  // namespace
