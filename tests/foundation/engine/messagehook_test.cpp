// The engine's way out for diagnostics.
#include <KOVDoaHandle/foundation/engine/messagehook.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <KOVDoaHandle/foundation/engine/containers.h>

namespace {

struct Received
{
    std::string file;
    int line;
    std::string function;
    std::string message;
};

std::vector<Received> received;
int callsOfTheOther = 0;

void receive(const char* file, int line, const char* function, const char* message)
{
    received.push_back({file, line, function, message});
}

void receiveElsewhere(const char*, int, const char*, const char*)
{
    ++callsOfTheOther;
}

class MessageHook : public ::testing::Test
{
protected:
    MessageHook()
    {
        received.clear();
        callsOfTheOther = 0;
    }
    ~MessageHook() override { InstallDoaMessageHandler(nullptr); }

    static void askForANegativeSize() { destroy_mat2d_fp32(create_mat2d_fp32(-3, 5)); }
};

TEST_F(MessageHook, ReceivesADiagnosticWithItsPlace)
{
    InstallDoaMessageHandler(receive);

    askForANegativeSize();

    ASSERT_EQ(received.size(), 1U);
    EXPECT_EQ(received[0].file, "containers");
    EXPECT_GT(received[0].line, 0);
    EXPECT_EQ(received[0].function, "create_mat2d_fp32");
    EXPECT_EQ(received[0].message, "a negative size was asked for; the record is empty");
}

TEST_F(MessageHook, StaysSilentForSizesOfZeroAndAbove)
{
    InstallDoaMessageHandler(receive);

    destroy_mat2d_fp32(create_mat2d_fp32(0, 5));
    destroy_vec_fp32(create_vec_fp32(0));
    destroy_vec_fp32(create_vec_fp32(8));

    EXPECT_TRUE(received.empty());
}

TEST_F(MessageHook, ReportsEveryKindOfRecord)
{
    InstallDoaMessageHandler(receive);

    destroy_vec_fp32(create_vec_fp32(-1));
    destroy_mat1d_fp32(create_mat1d_fp32(-1, 2));
    destroy_mat1d_uint8(create_mat1d_uint8(2, -1));
    destroy_mat1d_short(create_mat1d_short(-1, -1));
    destroy_mat2d_fp32(create_mat2d_fp32(-1, 2));
    destroy_mat2d_short(create_mat2d_short(2, -1));
    destroy_mat2d_int32(create_mat2d_int32(-1, 0));

    EXPECT_EQ(received.size(), 7U);
}

TEST_F(MessageHook, SendsNoPercentSigns)
{
    InstallDoaMessageHandler(receive);

    askForANegativeSize();

    ASSERT_EQ(received.size(), 1U);
    EXPECT_EQ(received[0].message.find('%'), std::string::npos);
}

TEST_F(MessageHook, ReplacesTheFormerCallback)
{
    InstallDoaMessageHandler(receive);
    InstallDoaMessageHandler(receiveElsewhere);

    askForANegativeSize();

    EXPECT_TRUE(received.empty());
    EXPECT_EQ(callsOfTheOther, 1);
}

TEST_F(MessageHook, IsSwitchedOffByANullPointer)
{
    InstallDoaMessageHandler(receive);
    InstallDoaMessageHandler(nullptr);

    askForANegativeSize();

    EXPECT_TRUE(received.empty());
}

}  // namespace
