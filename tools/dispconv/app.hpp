#pragma once

namespace dispconv::tool {

// The whole program: returns the exit status (0 done, 1 failed, 2 bad command line).
int run_tool(int argc, char** argv);

}  // namespace dispconv::tool
