/* The host interface headers as a C program sees them. */
#include <isp_framework.h>
#include <isp_platform.h>

int consumer_probe_c(void) {
    JsonModuleContext context = {0, 0, 0};
    VinHalSetupCmd cmd        = {0, 0};
    return (int)(sizeof context) + (int)cmd.cmd;
}
