import java.awt.Color;
import java.awt.Graphics;
import javax.swing.JFrame;
import javax.swing.JPanel;
import javax.swing.SwingUtilities;
import javax.swing.Timer;

/** A Swing game loop. */
public final class HostsSwing extends JPanel {
  private int frame;

  @Override
  protected void paintComponent(Graphics graphics) {
    graphics.setColor(new Color(90, 70, 20));
    graphics.fillRect(0, 0, getWidth(), getHeight());
    graphics.setColor(new Color(20, 120, 160));
    graphics.fillRect(frame * 4 % Math.max(getWidth(), 1), 40, 80, 80);
  }

  private static void open() {
    final HostsSwing game = new HostsSwing();
    final JFrame window = new JFrame("hosts-swing");
    window.setDefaultCloseOperation(JFrame.EXIT_ON_CLOSE);
    window.add(game);
    window.setBounds(100, 80, 640, 480);
    window.setVisible(true);
    new Timer(33, event -> {
      ++game.frame;
      game.repaint();
    }).start();
  }

  public static void main(String[] arguments) {
    SwingUtilities.invokeLater(HostsSwing::open);
  }
}
