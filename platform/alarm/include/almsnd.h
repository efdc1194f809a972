/*
 * Alarm report of the device. The replacement logs each report in one line
 * through COM_printf and hands it to an observer that a process may install.
 */
#ifndef ALMSND_H
#define ALMSND_H

#ifdef __cplusplus
extern "C" {
#endif

/* The replacement is built with hidden visibility; every call declared here
 * is the library's interface and leaves the shared object. */
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* Reports alarm iCode for camera iCamera at pcAddress, screen position
 * iPosition. Returns 0. Prints one line through COM_printf:
 * "ALMSND_AsyErrReport code=%d camera=%d address=%s position=%d\n"
 * (a null address prints as empty), then calls the observer, if any. */
int ALMSND_AsyErrReport(int iCode, int iCamera, const char* pcAddress, int iPosition,
                        int iReserved);

/* ---- Extension of this replacement ------------------------------------ */
typedef void (*ALMSND_Observer)(int iCode, int iCamera, const char* pcAddress, int iPosition,
                                void* pvContext);
/* Installs the observer (null removes it). The observer gets the
 * reporter's arguments unchanged (pcAddress may be null), one report at a
 * time; once this returns, the previous observer is called no more. It may
 * itself report or change the observer. */
void ALMSND_SetObserver(ALMSND_Observer pfnObserver, void* pvContext);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif /* ALMSND_H */
