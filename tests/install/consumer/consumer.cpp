/* Registers a module, runs its lifecycle on the simulated platform and uses the utilities, all
 * through the installed headers and libraries. Exits 0 and prints "consumer ok" when every
 * result is the expected one. */
#include <stdio.h>
#include <string.h>

#include <isp_json.h>

extern "C" int consumer_probe_c(void);

static int fail(const char *what) {
    fprintf(stderr, "consumer: %s\n", what);
    return 1;
}

int main() {
    JsonModuleOps *ops = nullptr;
    if (qv_isp_module_cc_json_register(&ops) != 0 || ops == nullptr) return fail("register");
    if (ops->process != ops->process2 || ops->sync == nullptr) return fail("operations table");

    PipeContext pipe;
    memset(&pipe, 0, sizeof pipe);
    IspRegShadow shadow = {0};
    pipe.reg_shadow     = &shadow;
    JsonModuleHandle handle;
    memset(&handle, 0, sizeof handle);
    handle.pipe = &pipe;
    if (ops->create(&handle) != 0 || handle.priv == nullptr) return fail("create");
    if (ops->trigger(&handle) != -1) return fail("trigger without a case path");
    if (ops->destroy(&handle) != 0 || handle.priv != nullptr) return fail("destroy");

    if (sign_to_regval(-256, "s3.8") != 0xF00) return fail("sign_to_regval");
    if (json::createArray1D<double>({1.5, -2}).serialize() != "[1.5,-2]")
        return fail("createArray1D");
    if (consumer_probe_c() != 12) return fail("C headers");
    puts("consumer ok");
    return 0;
}
