package p;
@VintfStability @Backing(type="long") enum E { A = -1L << 63 | 0x7fffffff, B, }
