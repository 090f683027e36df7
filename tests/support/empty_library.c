/* A library with the platform library's name, but without a factory. */
extern const int ovik_no_factory_here;
const int ovik_no_factory_here = 1;
