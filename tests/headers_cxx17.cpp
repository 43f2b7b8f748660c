// The public headers are C++17 as well.
#include <qel_rcpt.h>
#include <qel_rcpt_check.h>
#include <qel_rcpt_int.h>
#include <qel_rcpt_plain.h>
#include <qel_rcpt_print.h>
#include <qelstdlib.hpp>
#include <qelstdlib_json.hpp>
