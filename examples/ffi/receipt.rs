//! The receipt of a sale from Rust through its foreign function interface.

use std::ffi::{CStr, CString};
use std::os::raw::{c_char, c_void};
use std::ptr;

#[repr(C)]
struct Config {
    cust_lang: u32,
    merch_lang: u32,
    country_code: u32,
    currency_code: u32,
    industry: u32,
    merch_timezone: *const c_void,
}

#[link(name = "qelrcpt")]
extern "C" {
    fn Qel_rcpt_generate_plain(
        kvs: *const c_void,
        config: *const Config,
        line_len: usize,
        line_break: *const c_char,
    ) -> *mut c_void;
}

#[link(name = "qelstdlib")]
extern "C" {
    fn Qel_hash_dict_create(init_size: usize, fill_pct: usize, flags: u32) -> *mut c_void;
    fn Qel_hash_dict_insert(dict: *mut c_void, key: *const c_char, val: *const c_char) -> bool;
    fn Qel_hash_dict_destroy(dict: *mut c_void);
    fn Qel_hash_dict_enumerate(dict: *const c_void, walk: *mut *mut c_void) -> usize;
    fn Qel_hash_dict_enumerate_next(
        dict: *const c_void,
        walk: *mut c_void,
        key: *mut *const c_char,
        val: *mut *const c_char,
    ) -> bool;
    fn Qel_hash_dict_enumerate_free(walk: *mut c_void);
    fn Qel_time_tz_load(name: *const c_char) -> *mut c_void;
    fn Qel_time_tz_destroy(zone: *mut c_void);
}

/// A dictionary that is ours: it ends with its owner.
struct Dict(*mut c_void);

impl Drop for Dict {
    fn drop(&mut self) {
        unsafe { Qel_hash_dict_destroy(self.0) }
    }
}

impl Dict {
    /// The library copies key and value; the texts here end with the call.
    fn new(values: &[(&str, &str)]) -> Dict {
        let dict = Dict(unsafe { Qel_hash_dict_create(values.len(), 75, 0) });
        for (key, value) in values {
            let (key, value) = (CString::new(*key).unwrap(), CString::new(*value).unwrap());
            unsafe { Qel_hash_dict_insert(dict.0, key.as_ptr(), value.as_ptr()) };
        }
        dict
    }

    /// Copies of the pairs, which the dictionary only lends, in its order.
    fn pairs(&self) -> Vec<(String, String)> {
        let own = |lent| unsafe { CStr::from_ptr(lent) }.to_string_lossy().into_owned();
        let (mut walk, mut key, mut value) = (ptr::null_mut(), ptr::null(), ptr::null());
        let mut pairs = Vec::new();
        unsafe {
            Qel_hash_dict_enumerate(self.0, &mut walk);
            while Qel_hash_dict_enumerate_next(self.0, walk, &mut key, &mut value) {
                pairs.push((own(key), own(value)));
            }
            Qel_hash_dict_enumerate_free(walk);
        }
        pairs
    }
}

/// A time zone that is ours; a configuration borrows it.
struct Zone(*mut c_void);

impl Drop for Zone {
    fn drop(&mut self) {
        unsafe { Qel_time_tz_destroy(self.0) }
    }
}

fn main() {
    let name = CString::new("Europe/Berlin").unwrap();
    let zone = Zone(unsafe { Qel_time_tz_load(name.as_ptr()) });
    assert!(!zone.0.is_null(), "the zone is unknown"); // times would be those of this machine
    let config = Config {
        cust_lang: 3, // German
        merch_lang: 0,
        country_code: 276,
        currency_code: 978,
        industry: 1, // retail
        merch_timezone: zone.0,
    };
    let sale = Dict::new(&[
        ("merch_name", "Schwanenfeder Tee"),
        ("action", "sale"),
        ("cardtype", "VISA"),
        ("account", "XXXXXXXXXXXX7788"),
        ("timestamp", "1773502867"),
        ("amount", "18.40"),
        ("code", "AUTH"),
    ]);
    let line_break = CString::new("\n").unwrap();
    let blocks =
        Dict(unsafe { Qel_rcpt_generate_plain(sale.0, &config, 32, line_break.as_ptr()) });
    for (key, text) in blocks.pairs() {
        if key.starts_with("cust_") {
            println!("{}\n", text);
        }
    }
}
