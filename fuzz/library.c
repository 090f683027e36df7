/* The platform library as a file. Its objects are in the fuzzer, which has the input. */

struct QObject;
struct QObject* ovikFuzzInstance(const char* name);

__attribute__((visibility("default"))) struct QObject*
OvikPluginFactory_getInstance(const char* name)
{
    return ovikFuzzInstance(name);
}
