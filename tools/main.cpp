// The kovdoa program.
#include "tools/cli/commandline.h"

int main(int argc, char** argv)
{
    return kovtools::runCommandLine(argc, argv);
}
