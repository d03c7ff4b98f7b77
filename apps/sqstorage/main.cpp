#include "CommandLine.h"

int main(int count, char** arguments) { return sqCli::RunCommandLine(count, arguments); }
