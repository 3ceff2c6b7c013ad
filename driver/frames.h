// Modbus ASCII request frames.
//
//   position  length  content
//   0         1       ':'
//   1         2       station number in two decimal digits
//   3         2       function code
//   5         n       request data, upper-case hexadecimal digits
//   5+n       2       LRC of the digit pairs from position 1 on (Modbus over Serial Line V1.02,
//                     section 2.5.2.2)
//   7+n       2       CR LF
//
//   read      words   "03" address quantity            quantity in decimal digits
//             bits    "02" address quantity            "0010" or "0020"
//   write     words   "10" address quantity bytes values   hexadecimal
//             bit     "05" address "FF00" or "0000"
#ifndef FRAMES_H
#define FRAMES_H

#include "ostrel_kmr.h"

enum {
    FRAME_TEXT_MOST = FRAME_CHARS - 4 // LRC, CR and LF come after the text
};

// Fills `frame.frame` and `frame.frameLen` with `text` (':' to the last data digit), LRC and line
// end. An empty text changes nothing. A text of more than FRAME_TEXT_MOST characters is not framed:
// `frameLen` becomes 0.
void getFrame(FRAME_PRO &frame, QString text);

// Converts `text` to upper case (a to z only), up to its first NUL. Characters outside Latin-1
// become '?'. Not used by the frame builders, which write upper-case digits.
void sToS(QString &text);

// Copies `src` in upper case (a to z only) to `dst`, which has room for its length plus one.
void uppers(char *dst, const char *src);

// Appends the request that reads `var` to the driver's frames. For "CV2" a count above 1 is halved,
// also in `var`: from the number of words to the number of counters.
void getReadFrame(VARIABLE &var);

// Appends the request that writes `var` to the driver's frames. A bit is written from `data[0]`:
// 1 sets it, any other value clears it. A "CV2" request carries one counter, low word first in
// `data`; of a longer one only the first and the last word are sent.
void getWriteFrame(const VARIABLE &var);

#endif
