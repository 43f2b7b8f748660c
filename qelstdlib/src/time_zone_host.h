/* What a program supplies when the utility layer is built with QELSTDLIB_ZONES=host. */
#ifndef QELSTDLIB_TIME_ZONE_HOST_H
#define QELSTDLIB_TIME_ZONE_HOST_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What Qel_time_host_offset gives for a zone that the host does not know. */
#define QEL_TIME_HOST_UNKNOWN INT32_MIN

/* The seconds by which clocks in the zone are ahead of UTC at a time, given in seconds since
 * 1970-01-01 00:00:00 UTC. name is NUL-terminated and one of the IANA time zone database, or "" for
 * the host's own zone; time is any number. QEL_TIME_HOST_UNKNOWN for a name that the host does not
 * know. Called by any thread that renders. */
#ifdef __wasm__
__attribute__((import_module("qelstdlib"), import_name("time_offset")))
#endif
int32_t
Qel_time_host_offset(const char *name, int64_t time);

#ifdef __cplusplus
}
#endif

#endif
