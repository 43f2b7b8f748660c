// The receipt of a sale from Go through cgo.
package main

/*
#cgo pkg-config: qelrcpt
#include <qel_rcpt.h>
#include <stdlib.h>
*/
import "C"

import (
	"fmt"
	"os"
	"strings"
	"unsafe"
)

type block struct{ key, text string }

// withText lends a Go text to C for one call: C has to have its own copy, which we free.
func withText(text string, call func(*C.char)) {
	copied := C.CString(text)
	defer C.free(unsafe.Pointer(copied))
	call(copied)
}

// render gives the blocks in the order of the receipt. The library copies what it is given; the
// dictionaries and the walk are ours to release, the texts that it lends are copied before that.
func render(values map[string]string, config *C.Qel_rcpt_config_t, width int) (blocks []block) {
	record := C.Qel_hash_dict_create(C.size_t(len(values)), 75, C.QEL_HASH_DICT_NONE)
	defer C.Qel_hash_dict_destroy(record)
	for key, value := range values {
		withText(key, func(key *C.char) {
			withText(value, func(value *C.char) { C.Qel_hash_dict_insert(record, key, value) })
		})
	}
	var made *C.Qel_hash_dict_t
	withText("\n", func(lineBreak *C.char) {
		made = C.Qel_rcpt_generate_plain(record, config, C.size_t(width), lineBreak)
	})
	defer C.Qel_hash_dict_destroy(made)
	var walk *C.Qel_hash_dict_enum_t
	C.Qel_hash_dict_enumerate(made, &walk)
	defer C.Qel_hash_dict_enumerate_free(walk)
	var key, text *C.char
	for C.Qel_hash_dict_enumerate_next(made, walk, &key, &text) {
		blocks = append(blocks, block{C.GoString(key), C.GoString(text)})
	}
	return blocks
}

func main() {
	var zone *C.Qel_time_tz_t
	withText("Europe/Berlin", func(name *C.char) { zone = C.Qel_time_tz_load(name) })
	if zone == nil { // times would be those of this machine
		fmt.Fprintln(os.Stderr, "the zone is unknown")
		os.Exit(1)
	}
	defer C.Qel_time_tz_destroy(zone) // the configuration borrows it
	config := C.Qel_rcpt_config_t{
		cust_lang:      C.QEL_RCPT_LANG_DE,
		country_code:   276,
		currency_code:  978,
		industry:       C.QEL_RCPT_IND_RETAIL,
		merch_timezone: zone,
	}
	sale := map[string]string{
		"merch_name": "Schwanenfeder Tee", "action": "sale", "cardtype": "VISA",
		"account": "XXXXXXXXXXXX7788", "timestamp": "1773502867", "amount": "18.40", "code": "AUTH",
	}
	for _, block := range render(sale, &config, 32) {
		if strings.HasPrefix(block.key, "cust_") {
			fmt.Printf("%s\n\n", block.text)
		}
	}
}
