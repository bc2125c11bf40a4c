// SPDX-License-Identifier: Apache-2.0
package android.codeclogger;

import android.codeclogger.ServiceState;

/**
 * What codecloggerctl asks codecloggerd beyond the logger service's own interface, which knows
 * neither audio codecs nor whose codec is whose.
 */
interface ICodecLoggerAdmin {
    /** Under this name it is registered with the service manager. */
    const String SERVICE_NAME = "codec_logger_admin";

    ServiceState getState();
}
