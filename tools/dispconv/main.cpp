#include "app.hpp"

int main(int argc, char** argv) { return dispconv::tool::run_tool(argc, argv); }
