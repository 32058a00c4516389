#include <KOVDoaHandle/api/library.h>

#include <KOVDoaHandle/foundation/kovmessage.h>

const char* Version(void)
{
    return "0019";
}

void initLogging(void)
{
    initMessage();
}
