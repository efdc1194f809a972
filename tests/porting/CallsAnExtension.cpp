// One call of an extension of the replacement HTTP client, which the
// device's library does not have: linked against the device's calls alone,
// it must be the undefined reference that fails the link.
#include "kxhttp.h"

int CallsAnExtension(HTTP_SESSION* psSession) {
  return http_session_socket(psSession);
}
