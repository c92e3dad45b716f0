// Keeps the library targets valid while they are assembled from the subsystem objects.
namespace vemo { namespace libdewarp { } }
