// Run as a single source file against the installed jar and library: prints
// a decimal product and the jar's Implementation-Version.
import tam.oru.ieee754.Decimal128;

public class JarCheck {
  public static void main(String[] args) {
    Decimal128 product = Decimal128.parse("1.10").multiply(Decimal128.valueOf(3));
    System.out.println(product + " " + Decimal128.class.getPackage().getImplementationVersion());
  }
}
