/* Compiled as strict C99: the public header must need nothing else. */
#include "dispconv.h"

void dispconv_c99_check(void);
void dispconv_c99_check(void) {
    ajust_contrast_info settings = {64, 64, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    get_contrast_data(&settings);
}
