#include "host/Agent.h"

int main(int argc, char** argv) { return VLK::host::RunAgent(argc, argv); }
