#include "Host/CommandLine.h"

int main(int argc, char** argv) { return vel::host::runCommandLine(argc, argv); }
