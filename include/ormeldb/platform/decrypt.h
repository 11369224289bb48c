/*
 * libdecrypt: where the database password comes from.
 *
 * libormeldb.so leaves the name undefined and finds it when it is loaded: in the drop-in library, in the platform's
 * own one, or in the program.
 */
#ifndef ORMELDB_PLATFORM_DECRYPT_H
#define ORMELDB_PLATFORM_DECRYPT_H

#ifdef __cplusplus
extern "C" {
#endif

#define ORMEL_DECRYPT_PASSWORD_OFFSET 4448

/*
 * The password is the NUL-terminated text from byte ORMEL_DECRYPT_PASSWORD_OFFSET on; empty where there is none. The
 * drop-in library fills it when it is loaded: from the file ormel-db-password in $CREDENTIALS_DIRECTORY, else from
 * "../conf/db.password".
 */
extern unsigned char g_decrypt_info_s[8192];

#ifdef __cplusplus
}
#endif

#endif
