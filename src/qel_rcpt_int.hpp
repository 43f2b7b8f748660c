// For sources that still include it under its former name.
#ifndef QEL_RCPT_INT_HPP
#define QEL_RCPT_INT_HPP

#include "qel_rcpt_frame.hpp"
#include "qel_rcpt_rules.hpp"

#endif
