#include "run/command_line.h"

int main(int argc, char** argv) {
    return mnd::run_command_line(argc, argv);
}
