// dmbtv: the viewer.
#include "host/app/dmbtv/Options.h"
#include "host/app/dmbtv/Program.h"

int main(int argc, char** argv) {
    int status = 0;
    const auto options = dmbtv::ReadOptions(argc, argv, status);
    return options ? dmbtv::Run(*options) : status;
}
