#include "front/python/core_lock.hpp"

std::mutex& core_mutex()
{
    static std::mutex mutex;
    return mutex;
}
