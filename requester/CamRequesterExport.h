// Visibility of the library's interface. The library is built with hidden
// visibility by default (see cmake/Exports.cmake); only what is marked
// CAMREQ_API leaves the shared object: the requester classes and the
// notification class. Everything else (builders, scanners, the session
// engine) stays inside, so the device's ABI is exactly these classes.
#ifndef CAM_REQUESTER_EXPORT_H
#define CAM_REQUESTER_EXPORT_H

#if defined(__GNUC__) || defined(__clang__)
#define CAMREQ_API __attribute__((visibility("default")))
#else
#define CAMREQ_API
#endif

#endif
