/* Runs the plugin: white must come out at 254 in every channel. */
#include <stdio.h>

int plugin_white_level(const char **version);

int main(void) {
    const char *version = "";
    const int level = plugin_white_level(&version);
    printf("plugin with dispconv %s: white is %d\n", version, level);
    return level == 254 ? 0 : 1;
}
