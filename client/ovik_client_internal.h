/*
 * For ovikctl, which links the library statically. Neither installed nor exported.
 */
#ifndef OVIK_CLIENT_INTERNAL_H
#define OVIK_CLIENT_INTERNAL_H

#include "ovik_client.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @return the connected socket; it belongs to the client */
int ovik_internal_descriptor(const ovik_client* client);

#ifdef __cplusplus
}
#endif

#endif
