/* A library of the platform library's name that has no factory. */
extern const int ovik_no_factory_here;
const int ovik_no_factory_here = 1;
