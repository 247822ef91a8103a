import {fetchToken} from "/app/data.js";

const interval = 1000;  // between two looks whether the token is still the same, in milliseconds

/** Keeps `auth.accessToken` the token that is valid now. Signed out, there is none. */
export async function keepToken(auth) {
  try {
    auth.accessToken = await fetchToken();
  } catch {
    // The service can't be reached: what was true stays until it says otherwise.
  }
  setTimeout(keepToken, interval, auth);
}
